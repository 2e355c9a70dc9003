# Installs the build into a fresh prefix, checks what was installed, and builds a host against it
# with find_package(VXUILib) and with pkg-config.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DSOVERSION=... -DLIBDIR=...
#         -P InstallTest.cmake
foreach(variable BUILD_DIR SOURCE_DIR WORK_DIR SOVERSION LIBDIR)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "${variable} is not set")
  endif()
endforeach()
include(${CMAKE_CURRENT_LIST_DIR}/PackageChecks.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
vx_run_step("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
vx_check_installed_headers(${prefix}/include ${BUILD_DIR}/public-headers.txt)
vx_check_library_dir(${prefix} ${LIBDIR} ${SOVERSION})

# The package must not point back into the source or build tree.
file(GLOB_RECURSE package_files ${prefix}/*.cmake ${prefix}/*.pc)
foreach(package_file IN LISTS package_files)
  file(READ ${package_file} text)
  foreach(tree ${SOURCE_DIR} ${BUILD_DIR})
    string(FIND "${text}" "${tree}/" found)
    if(NOT found EQUAL -1)
      message(FATAL_ERROR "${package_file} refers to ${tree}")
    endif()
  endforeach()
endforeach()

vx_check_example(${SOURCE_DIR} ${prefix} ${WORK_DIR} ${SOVERSION} ${LIBDIR})

# pkg-config: compile and run a one-file host with the flags vxuilib.pc gives.
set(pc_dir ${prefix}/${LIBDIR}/pkgconfig)
vx_run_step("pkg-config" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pc_dir}
            pkg-config --cflags --libs vxuilib)
string(STRIP "${step_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
file(WRITE ${WORK_DIR}/pkgconfig-host.cpp [=[
#include <VXUILib/ControlFactory.h>
#include <cstdio>
int main() {
    vx::registerLibraryControls();
    std::printf("%lld controls\n", static_cast<long long>(vx::ControlFactory::classNames().size()));
}
]=])
vx_run_step("compile with pkg-config" c++ -std=c++20 -fPIC ${WORK_DIR}/pkgconfig-host.cpp
            -o ${WORK_DIR}/pkgconfig-host ${flags})
# An rpath would not reach the libraries' own dependencies; the loader's path does.
vx_run_step("run the pkg-config host" ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${pc_dir}/..
            ${WORK_DIR}/pkgconfig-host)
if(NOT step_output MATCHES "^7 controls")
  message(FATAL_ERROR "the pkg-config host did not see the seven controls: ${step_output}")
endif()
