# Runs the viewer's unattended tour (it exports the sample first) and checks its screenshots.
#   cmake -DVIEWER=path/to/vxviewer -DOUTPUT_DIR=... -P TourTest.cmake
file(REMOVE_RECURSE ${OUTPUT_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=QT_QPA_PLATFORM --unset=DISPLAY
                        --unset=WAYLAND_DISPLAY ${VIEWER} --tour ${OUTPUT_DIR}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
message(STATUS "${output}")
if(NOT result EQUAL 0)
  message(FATAL_ERROR "vxviewer --tour failed (${result})")
endif()
file(GLOB shots ${OUTPUT_DIR}/*.png)
list(LENGTH shots count)
if(count LESS 4)
  message(FATAL_ERROR "expected 4 screenshots, found ${count}")
endif()
foreach(shot IN LISTS shots)
  file(SIZE ${shot} size)
  file(READ ${shot} signature LIMIT 8 HEX)
  if(size LESS 5000 OR NOT signature STREQUAL "89504e470d0a1a0a")
    message(FATAL_ERROR "${shot} is not a picture of the window (${size} bytes)")
  endif()
endforeach()
# The document opened is the exported copy in a volume's Document folder.
if(NOT output MATCHES "\\[open [^]]*/Document/[^]]+\\]")
  message(FATAL_ERROR "the tour opened no exported document")
endif()
