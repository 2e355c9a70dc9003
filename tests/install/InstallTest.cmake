# Installs the library's development files into a fresh prefix, then configures, builds and runs a
# small host project that finds them with find_package(VXUILib) and creates a control by name.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -P InstallTest.cmake
foreach(variable BUILD_DIR SOURCE_DIR WORK_DIR)
  if(NOT ${variable})
    message(FATAL_ERROR "${variable} is not set")
  endif()
endforeach()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${output}")
  endif()
  set(step_output "${output}" PARENT_SCOPE)
endfunction()

run_step("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
         --component Development)

# Headers keep their folders; the package must not point back into the source or build tree.
foreach(header vxuilib/data/Recordset.h vxuilib/server/ControlFactory.h
               vxuilib/companions/DefaultCompanions.h)
  if(NOT EXISTS ${prefix}/include/${header})
    message(FATAL_ERROR "not installed: include/${header}")
  endif()
endforeach()
file(GLOB_RECURSE package_files ${prefix}/*.cmake)
foreach(package_file IN LISTS package_files)
  file(READ ${package_file} text)
  foreach(tree ${SOURCE_DIR} ${BUILD_DIR})
    string(FIND "${text}" "${tree}/" found)
    if(NOT found EQUAL -1)
      message(FATAL_ERROR "${package_file} refers to ${tree}")
    endif()
  endforeach()
endforeach()

set(launcher)
find_program(ccache_program ccache)
if(ccache_program)
  set(launcher -DCMAKE_CXX_COMPILER_LAUNCHER=${ccache_program})
endif()
run_step("configure the host" ${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/install/host
         -B ${WORK_DIR}/host -G Ninja -DCMAKE_BUILD_TYPE=Release
         -DCMAKE_PREFIX_PATH=${prefix} ${launcher})
run_step("build the host" ${CMAKE_COMMAND} --build ${WORK_DIR}/host)
run_step("run the host" ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
         ${WORK_DIR}/host/vxhost)
if(NOT step_output MATCHES "created vx::VXKeywords")
  message(FATAL_ERROR "the host did not create its control:\n${step_output}")
endif()
message(STATUS "host output: ${step_output}")
