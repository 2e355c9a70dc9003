# Builds the API reference into OUTPUT_DIR and fails on any doxygen warning, listing them all:
# a public member without its comment is a failure, not a gap found later in the pages.
#   cmake -DDOXYGEN=... -DDOXYFILE=<build>/Doxyfile -DOUTPUT_DIR=... -P RunDoxygen.cmake
foreach(variable DOXYGEN DOXYFILE OUTPUT_DIR)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "${variable} is not set")
  endif()
endforeach()

file(REMOVE_RECURSE ${OUTPUT_DIR})
file(MAKE_DIRECTORY ${OUTPUT_DIR})
# Later settings win, so one Doxyfile serves any output folder.
file(READ ${DOXYFILE} config)
set(log ${OUTPUT_DIR}/warnings.log)
string(APPEND config "\nOUTPUT_DIRECTORY = \"${OUTPUT_DIR}\"\nWARN_LOGFILE = \"${log}\"\n")
file(WRITE ${OUTPUT_DIR}/Doxyfile "${config}")

execute_process(COMMAND ${DOXYGEN} ${OUTPUT_DIR}/Doxyfile RESULT_VARIABLE result
                OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "doxygen failed (${result}):\n${output}")
endif()
file(STRINGS ${log} warnings)
list(LENGTH warnings count)
if(count GREATER 0)
  list(JOIN warnings "\n" text)
  message(FATAL_ERROR "${text}\n${count} doxygen warning lines")
endif()
message(STATUS "API reference without warnings: ${OUTPUT_DIR}/html/index.html")
