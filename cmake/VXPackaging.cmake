# Debian packages through CPack, one per install component (scripts/package.sh builds them):
#   libvxuilib<soversion>     the shared libraries
#   libvxuilib-dev            headers, CMake package, pkg-config file
#   vxuilib-tools             vxrepo, vxdemo, vxviewer, vxtypelib
#   vxuilib-designer-plugin   the controls in Qt Designer
# Library dependencies come from dpkg-shlibdeps; the packages depend on each other by version.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vxuilib)
set(CPACK_PACKAGE_VENDOR "VXUILib developers")
set(CPACK_PACKAGE_CONTACT "VXUILib developers <vxuilib-dev@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Document-management controls for Qt hosts")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The plugin and the companions link libraries of this build, which no installed package owns.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "VXUILib shared libraries\n The seven document-management controls (vxuilib), their data layer\n over SQLite and PostgreSQL (vxdata) and the default companions (vxcompanions).")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvxuilib${VX_SOVERSION})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "VXUILib development files\n Public headers under VXUILib/, the CMake package (find_package(VXUILib))\n and vxuilib.pc.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvxuilib-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# Hosts compile against Qt's headers; static libraries also need what they link privately.
set(dev_depends "qt6-base-dev")
if(NOT BUILD_SHARED_LIBS)
  string(APPEND dev_depends ", libsqlite3-dev, libpq-dev")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${dev_depends}")

set(vx_tools)
foreach(app IN ITEMS vxrepo vxdemo vxviewer vxtypelib)
  if(TARGET ${app})
    list(APPEND vx_tools ${app})
  endif()
endforeach()
if(vx_tools)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
  list(JOIN vx_tools ", " tool_list)
  set(CPACK_COMPONENT_TOOLS_DESCRIPTION
      "VXUILib tools\n ${tool_list}: the repository tool, the sample host and the viewer of\n portable exports.")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vxuilib-tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
endif()

if(TARGET vxuilibdesigner)
  list(APPEND CPACK_COMPONENTS_ALL Designer)
  set(CPACK_COMPONENT_DESIGNER_DESCRIPTION
      "VXUILib controls for Qt Designer\n The seven controls in Designer's widget box, group \"VXUILib\".")
  set(CPACK_COMPONENT_DESIGNER_DEPENDS Runtime)
  set(CPACK_DEBIAN_DESIGNER_PACKAGE_NAME vxuilib-designer-plugin)
  set(CPACK_DEBIAN_DESIGNER_PACKAGE_SECTION devel)
  set(CPACK_DEBIAN_DESIGNER_PACKAGE_DEPENDS "qt6-tools-dev-tools")
endif()

include(CPack)
