# Runs the demo's unattended tour into a fresh folder and checks its screenshots and outputs.
#   cmake -DDEMO=path/to/vxdemo -DOUTPUT_DIR=... -P TourTest.cmake
set(PROGRAM ${DEMO})
set(MIN_SHOTS 10)
include(${CMAKE_CURRENT_LIST_DIR}/../support/TourRun.cmake)
# What the tour's exports wrote: the table with its memo file, the text file, the export root.
foreach(output TourInvoices.dbf TourInvoices.fpt tour-invoices.csv)
  if(NOT EXISTS ${OUTPUT_DIR}/outputs/${output})
    message(FATAL_ERROR "the tour left no outputs/${output}")
  endif()
endforeach()
file(GLOB roots ${OUTPUT_DIR}/outputs/portable/ExportToFolder_*/*/veltrane.znl)
if(NOT roots)
  message(FATAL_ERROR "the tour's portable export left no volume folder with veltrane.znl")
endif()
