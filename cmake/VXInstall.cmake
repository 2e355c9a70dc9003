# What gets installed, by component (the Debian packages follow the components):
#   Runtime      the shared libraries
#   Development  public headers, export headers, CMake package, pkg-config file, link names
#   Tools        vxrepo, vxdemo, vxviewer, vxtypelib
#   Designer     the Qt Designer plugin
set(VX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VXUILib)

install(TARGETS vxdata_public vxuilib_public vxcompanions_public EXPORT VXUILibTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
                NAMELINK_COMPONENT Development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)

install(FILES ${VX_PUBLIC_HEADER_PATHS} DESTINATION ${VX_INSTALL_INCLUDEDIR}/VXUILib
        COMPONENT Development)
list(TRANSFORM VX_EXPORT_HEADERS PREPEND ${VX_GENERATED_INCLUDE_DIR}/VXUILib/
     OUTPUT_VARIABLE VX_EXPORT_HEADER_PATHS)
install(FILES ${VX_EXPORT_HEADER_PATHS} DESTINATION ${VX_INSTALL_INCLUDEDIR}/VXUILib
        COMPONENT Development)

# CMake package: find_package(VXUILib) gives VXUILib::vxdata, ::vxuilib and ::vxcompanions.
if(BUILD_SHARED_LIBS)
  set(VX_PACKAGE_STATIC OFF)
else()
  set(VX_PACKAGE_STATIC ON)
endif()
install(EXPORT VXUILibTargets NAMESPACE VXUILib:: DESTINATION ${VX_PACKAGE_DIR}
        COMPONENT Development)
configure_package_config_file(cmake/VXUILibConfig.cmake.in
                              ${CMAKE_CURRENT_BINARY_DIR}/VXUILibConfig.cmake
                              INSTALL_DESTINATION ${VX_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VXUILibConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VXUILibConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VXUILibConfigVersion.cmake
        DESTINATION ${VX_PACKAGE_DIR} COMPONENT Development)

# pkg-config: the prefix is found from the file's own place, so an unpacked tree works too.
set(VX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH VX_PKGCONFIG_TO_PREFIX /${VX_PKGCONFIG_DIR} /)
string(REGEX REPLACE "/$" "" VX_PKGCONFIG_TO_PREFIX "${VX_PKGCONFIG_TO_PREFIX}")
configure_file(cmake/vxuilib.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vxuilib.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxuilib.pc DESTINATION ${VX_PKGCONFIG_DIR}
        COMPONENT Development)

foreach(app IN ITEMS vxrepo vxdemo vxviewer vxtypelib)
  if(TARGET ${app})
    install(TARGETS ${app} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
  endif()
endforeach()
if(TARGET vxuilibdesigner)
  # Where this Qt looks for Designer plugins, relative to the prefix.
  install(TARGETS vxuilibdesigner LIBRARY DESTINATION ${QT6_INSTALL_PLUGINS}/designer
          COMPONENT Designer)
endif()
