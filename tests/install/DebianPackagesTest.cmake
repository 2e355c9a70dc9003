# Makes the Debian packages of the build, checks their names and dependencies, unpacks them into
# a temporary root and builds the example host against that root.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DSOVERSION=... -DVERSION=...
#         -DLIBDIR=...
#         -P DebianPackagesTest.cmake
foreach(variable BUILD_DIR SOURCE_DIR WORK_DIR SOVERSION VERSION LIBDIR)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "${variable} is not set")
  endif()
endforeach()
include(${CMAKE_CURRENT_LIST_DIR}/PackageChecks.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
vx_run_step("cpack" cpack --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR}/debs)
set(runtime libvxuilib${SOVERSION})
set(root ${WORK_DIR}/root)

# package name -> what its Depends must name
set(expect_${runtime} "libqt6widgets6" "libsqlite3-0" "libpq5")
set(expect_libvxuilib-dev "${runtime} (= ${VERSION})" "qt6-base-dev")
set(expect_vxuilib-tools "libqt6widgets6")
set(expect_vxuilib-designer-plugin "${runtime} (= ${VERSION})")
file(GLOB debs ${WORK_DIR}/debs/*.deb)
set(names)
foreach(deb IN LISTS debs)
  vx_run_step("read ${deb}" dpkg-deb --field ${deb} Package)
  string(STRIP "${step_output}" name)
  list(APPEND names ${name})
  vx_run_step("read ${deb}" dpkg-deb --field ${deb} Depends)
  set(depends "${step_output}")
  foreach(wanted IN LISTS expect_${name})
    string(FIND "${depends}" "${wanted}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "${name} does not depend on ${wanted}: ${depends}")
    endif()
  endforeach()
  message(STATUS "${name}: ${depends}")
  vx_run_step("unpack ${deb}" dpkg-deb -x ${deb} ${root})
endforeach()
list(SORT names)
set(wanted_names ${runtime} libvxuilib-dev vxuilib-designer-plugin vxuilib-tools)
list(SORT wanted_names)
if(NOT names STREQUAL wanted_names)
  message(FATAL_ERROR "packages made: ${names}; expected ${wanted_names}")
endif()

vx_check_installed_headers(${root}/usr/include ${BUILD_DIR}/public-headers.txt)
vx_check_library_dir(${root}/usr ${LIBDIR} ${SOVERSION})
vx_check_example(${SOURCE_DIR} ${root}/usr ${WORK_DIR} ${SOVERSION} ${LIBDIR})
