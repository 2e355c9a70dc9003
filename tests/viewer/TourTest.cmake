# Runs the viewer's unattended tour (it exports the sample first) and checks its screenshots.
#   cmake -DVIEWER=path/to/vxviewer -DOUTPUT_DIR=... -P TourTest.cmake
set(PROGRAM ${VIEWER})
set(MIN_SHOTS 4)
include(${CMAKE_CURRENT_LIST_DIR}/../support/TourRun.cmake)
# The document opened is the exported copy in a volume's Document folder.
if(NOT output MATCHES "\\[open [^]]*/Document/[^]]+\\]")
  message(FATAL_ERROR "the tour opened no exported document")
endif()
