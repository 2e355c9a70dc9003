# Runs PROGRAM's unattended tour into a fresh OUTPUT_DIR with no platform chosen (the tour must
# pick the offscreen one itself), then checks that it saved at least MIN_SHOTS pictures of the
# window. Leaves the tour's output in `output` and the picture count in `count`.
file(REMOVE_RECURSE ${OUTPUT_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=QT_QPA_PLATFORM --unset=DISPLAY
                        --unset=WAYLAND_DISPLAY ${PROGRAM} --tour ${OUTPUT_DIR}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
message(STATUS "${output}")
get_filename_component(program_name ${PROGRAM} NAME)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${program_name} --tour failed (${result})")
endif()
file(GLOB shots ${OUTPUT_DIR}/*.png)
list(LENGTH shots count)
if(count LESS MIN_SHOTS)
  message(FATAL_ERROR "expected at least ${MIN_SHOTS} screenshots, found ${count}")
endif()
foreach(shot IN LISTS shots)
  file(SIZE ${shot} size)
  file(READ ${shot} signature LIMIT 8 HEX)
  if(size LESS 5000 OR NOT signature STREQUAL "89504e470d0a1a0a")
    message(FATAL_ERROR "${shot} is not a picture of the window (${size} bytes)")
  endif()
endforeach()
string(REGEX MATCH "Saved ([0-9]+) screenshots" saved "${output}")
if(NOT CMAKE_MATCH_1 EQUAL count)
  message(FATAL_ERROR "the tour reported '${saved}' but left ${count} pictures")
endif()
