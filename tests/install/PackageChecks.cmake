# Steps shared by the package tests: what an installed tree holds, and a host built against it.

function(vx_run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${output}")
  endif()
  set(step_output "${output}" PARENT_SCOPE)
endfunction()

# The headers under <include_dir> must be exactly the public list (one VXUILib/Name.h a line).
function(vx_check_installed_headers include_dir list_file)
  file(GLOB_RECURSE found LIST_DIRECTORIES false RELATIVE ${include_dir} ${include_dir}/*)
  file(STRINGS ${list_file} expected)
  list(SORT found)
  list(SORT expected)
  if(NOT found STREQUAL expected)
    set(extra ${found})
    list(REMOVE_ITEM extra ${expected})
    set(missing ${expected})
    list(REMOVE_ITEM missing ${found})
    message(FATAL_ERROR "installed headers differ from the public list\n"
                        "  not public: ${extra}\n  missing: ${missing}")
  endif()
  list(LENGTH found count)
  message(STATUS "${count} headers installed, as listed")
endfunction()

# The libraries, the CMake package and the pkg-config file all lie in <prefix>/<libdir>.
function(vx_check_library_dir prefix libdir soversion)
  foreach(file libvxuilib.so.${soversion} libvxdata.so.${soversion}
               libvxcompanions.so.${soversion} pkgconfig/vxuilib.pc
               cmake/VXUILib/VXUILibConfig.cmake)
    if(NOT EXISTS ${prefix}/${libdir}/${file})
      file(GLOB_RECURSE found RELATIVE ${prefix} ${prefix}/*/${file})
      message(FATAL_ERROR "${file} is not in ${libdir} (found: ${found})")
    endif()
  endforeach()
  message(STATUS "libraries and package files in ${libdir}")
endfunction()

# Builds examples/minimal-host against the package under <prefix>, runs it on a sample the
# package's own vxrepo makes, and checks that it loads the shared library from <prefix>/<libdir>.
# The run must pass without a single message to the user.
function(vx_check_example source_dir prefix work_dir soversion libdir)
  set(launcher)
  find_program(ccache_program ccache)
  if(ccache_program)
    set(launcher -DCMAKE_CXX_COMPILER_LAUNCHER=${ccache_program})
  endif()
  vx_run_step("configure the example" ${CMAKE_COMMAND} -S ${source_dir}/examples/minimal-host
              -B ${work_dir}/example -G Ninja -DCMAKE_BUILD_TYPE=Release
              -DCMAKE_PREFIX_PATH=${prefix} ${launcher})
  vx_run_step("build the example" ${CMAKE_COMMAND} --build ${work_dir}/example)
  set(example ${work_dir}/example/minimal-host)

  vx_run_step("ldd" ldd ${example})
  string(REGEX MATCH "libvxuilib\\.so\\.${soversion} => [^ ]+" line "${step_output}")
  if(NOT line)
    message(FATAL_ERROR "the example does not load libvxuilib.so.${soversion}:\n${step_output}")
  endif()
  string(FIND "${line}" "=> ${prefix}/${libdir}/libvxuilib.so" inside)
  if(inside EQUAL -1)
    message(FATAL_ERROR "the example loads the library from elsewhere: ${line}")
  endif()
  message(STATUS "ldd: ${line}")

  # The sample, the settings and the system folder stay in the work folder.
  set(environment VXUILIB_SYSTEM_DIR=${work_dir}/system XDG_CONFIG_HOME=${work_dir}/config
                  QT_QPA_PLATFORM=offscreen)
  vx_run_step("create the sample" ${CMAKE_COMMAND} -E env ${environment}
              ${prefix}/bin/vxrepo create-sample ${work_dir}/sample --documents 5)
  vx_run_step("run the example" ${CMAKE_COMMAND} -E env ${environment} ${example} --check
              ${work_dir}/sample/Invoices.ini)
  if(NOT step_output MATCHES "group Invoices, current item [1-9]")
    message(FATAL_ERROR "the example did not show the group's documents:\n${step_output}")
  endif()
  if(step_output MATCHES "(^|\n)(message|input) \"")
    message(FATAL_ERROR "the example asked or told the user something:\n${step_output}")
  endif()
  message(STATUS "example: ${step_output}")
endfunction()
