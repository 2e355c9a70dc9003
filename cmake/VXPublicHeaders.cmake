# The headers hosts get, installed side by side under include/VXUILib/ and included as
# <VXUILib/Name.h>: the seven controls, the control factory, the companion interfaces and their
# registry, the UI services, the connection and record set a host hands to the controls, the
# errors, and the default companions. Everything else stays in the source tree.
# A public header includes only other public headers, through <VXUILib/...>.
set(VX_PUBLIC_HEADERS
    src/data/ColumnInfo.h
    src/data/Connection.h
    src/data/Error.h
    src/data/Field.h
    src/data/FieldTypeCodes.h
    src/data/Recordset.h
    src/hitlist/VXHitList.h
    src/index/VXIndex.h
    src/pickers/VXDictionary.h
    src/pickers/VXDocSec.h
    src/pickers/VXKeywords.h
    src/query/VXFavourites.h
    src/query/VXQuery.h
    src/server/ControlFactory.h
    src/session/QtUiServices.h
    src/session/UiServices.h
    src/session/companions/CompanionRegistry.h
    src/session/companions/KeyCodes.h
    src/session/companions/NativeHelpers.h
    src/session/companions/VXDynaForm.h
    src/session/companions/VXItemList.h
    src/session/companions/VXSQLQuery.h
    src/session/companions/VXScanIndex.h
    src/session/companions/VXSecurity.h
    companions/DefaultCompanions.h)
set(VX_EXPORT_HEADERS vxdata_export.h vxuilib_export.h vxcompanions_export.h)

# In the build tree <VXUILib/Name.h> reaches the header where it lives, through a forwarding
# header beside the generated export headers.
set(VX_PUBLIC_HEADER_PATHS)
foreach(header IN LISTS VX_PUBLIC_HEADERS)
  get_filename_component(name ${header} NAME)
  set(forward ${VX_GENERATED_INCLUDE_DIR}/VXUILib/${name})
  set(text "#include \"${PROJECT_SOURCE_DIR}/${header}\"\n")
  if(EXISTS ${forward})
    file(READ ${forward} current)
  endif()
  if(NOT EXISTS ${forward} OR NOT current STREQUAL text)
    file(WRITE ${forward} "${text}")
  endif()
  list(APPEND VX_PUBLIC_HEADER_PATHS ${PROJECT_SOURCE_DIR}/${header})
endforeach()

# The installed list, for the test that compares it with what an install holds.
set(VX_INSTALLED_HEADER_NAMES ${VX_EXPORT_HEADERS})
foreach(header IN LISTS VX_PUBLIC_HEADERS)
  get_filename_component(name ${header} NAME)
  list(APPEND VX_INSTALLED_HEADER_NAMES ${name})
endforeach()
list(TRANSFORM VX_INSTALLED_HEADER_NAMES PREPEND VXUILib/)
list(JOIN VX_INSTALLED_HEADER_NAMES "\n" text)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/public-headers.txt CONTENT "${text}\n")

# The API reference covers exactly these headers (scripts/docs.sh runs doxygen on this file).
set(VX_DOCS_OUTPUT_DIR ${PROJECT_BINARY_DIR}/docs)
list(JOIN VX_PUBLIC_HEADER_PATHS " \\\n    " VX_DOCS_INPUT)
string(APPEND VX_DOCS_INPUT " \\\n    ${PROJECT_SOURCE_DIR}/docs/host-guide.md")
configure_file(${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
