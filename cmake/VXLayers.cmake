# The libraries of the product are built in layers. Each layer is compiled once, into an object
# library, and two libraries are made of the same objects:
#   <layer>         static, for the project's own tools, tests and benchmarks, which use classes
#                   that hosts never see;
#   <layer>_public  the library hosts get: shared unless BUILD_SHARED_LIBS is off, symbols hidden
#                   except those marked with the layer's export macro (<LAYER>_EXPORT from the
#                   generated header VXUILib/<layer>_export.h), installed as VXUILib::<layer>.
# Keeping the in-tree names on the static variant means code added to the tree links as before.
# A few internal classes and functions that one layer uses from the layer below (the record-set
# model, the group connection, form definitions, conversions) carry the export macro as well, so
# the shared layers link; their headers are not installed.
include(GenerateExportHeader)

set(VX_GENERATED_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
set(VX_SOVERSION ${PROJECT_VERSION_MAJOR})

# vx_add_layer(<layer> SOURCES ... INCLUDE_DIRS ...
#              [LAYERS <lower layer>...]                 used by this layer's public headers
#              [PUBLIC_LIBS ...] [PRIVATE_LIBS ...])    outside libraries
function(vx_add_layer layer)
  cmake_parse_arguments(arg "" "" "SOURCES;INCLUDE_DIRS;LAYERS;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  string(TOUPPER ${layer} upper)
  set(objects ${layer}_objects)
  set(public ${layer}_public)

  add_library(${objects} OBJECT ${arg_SOURCES})
  set_target_properties(${objects} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                              VISIBILITY_INLINES_HIDDEN ON
                                              POSITION_INDEPENDENT_CODE ON
                                              DEFINE_SYMBOL ${layer}_EXPORTS)
  generate_export_header(${objects} BASE_NAME ${layer}
                         EXPORT_FILE_NAME ${VX_GENERATED_INCLUDE_DIR}/VXUILib/${layer}_export.h)
  target_compile_definitions(${objects} PRIVATE ${layer}_EXPORTS)
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(${objects} PUBLIC ${upper}_STATIC_DEFINE)
  endif()
  set(build_includes)
  foreach(dir IN LISTS arg_INCLUDE_DIRS)
    list(APPEND build_includes $<BUILD_INTERFACE:${dir}>)
  endforeach()
  list(APPEND build_includes $<BUILD_INTERFACE:${VX_GENERATED_INCLUDE_DIR}>)
  target_include_directories(${objects} PUBLIC ${build_includes})
  set(lower_objects)
  set(lower_internal)
  set(lower_public)
  foreach(lower IN LISTS arg_LAYERS)
    list(APPEND lower_objects ${lower}_objects)
    list(APPEND lower_internal ${lower})
    list(APPEND lower_public ${lower}_public)
  endforeach()
  target_link_libraries(${objects} PUBLIC ${lower_objects} ${arg_PUBLIC_LIBS}
                                   PRIVATE ${arg_PRIVATE_LIBS})

  # In-tree variant: every class reachable.
  add_library(${layer} STATIC)
  target_link_libraries(${layer} PUBLIC ${objects} ${lower_internal} ${arg_PRIVATE_LIBS})
  set_target_properties(${layer} PROPERTIES OUTPUT_NAME ${layer}_internal)

  # Host variant.
  add_library(${public} $<TARGET_OBJECTS:${objects}>)
  add_library(VXUILib::${layer} ALIAS ${public})
  target_include_directories(${public} INTERFACE ${build_includes}
                                                 $<INSTALL_INTERFACE:${VX_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${public} PUBLIC ${lower_public} ${arg_PUBLIC_LIBS}
                                  PRIVATE ${arg_PRIVATE_LIBS})
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(${public} INTERFACE ${upper}_STATIC_DEFINE)
  endif()
  set_target_properties(${public} PROPERTIES OUTPUT_NAME ${layer} EXPORT_NAME ${layer}
                                             VERSION ${PROJECT_VERSION}
                                             SOVERSION ${VX_SOVERSION})
  if(BUILD_SHARED_LIBS AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT APPLE)
    # A symbol the library needs but nobody exports fails here, not in a host's link.
    target_link_options(${public} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
