# Debian packages from the three install components (cpack -G DEB in the build directory):
#   libzanfe1     runtime: the front-end library
#   libzanfe-dev  development: headers, links, static engine, CMake and pkg-config packages
#   zanfe         tools: the zanfe command and the reference platform it runs on
# Dependencies on system libraries come from dpkg-shlibdeps, those between the three
# packages are written here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zanfe)
set(CPACK_PACKAGE_VENDOR "zanfe developers")
set(CPACK_PACKAGE_CONTACT "zanfe developers <zanfe-dev@example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)   # the build keeps its debug information; the packages do not
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzanfe1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# dpkg runs ldconfig through its trigger (CPack also writes maintainer scripts that call it).
# The package's symbols file is the record the ABI guard checks the library against.
configure_file(${PROJECT_SOURCE_DIR}/tests/install/abi/libzanfe1.symbols ${PROJECT_BINARY_DIR}/deb/symbols COPYONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/deb/triggers
  ${PROJECT_BINARY_DIR}/deb/symbols)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"data-model front end of the configuration database context (library)
libzanfe is the front end of the configuration database context
zan_config_db_context: a data-access engine loads it with dlopen, calls its
initialiser and from then on resolves paths and renders rows only through
the arrays and functions it registered. It links against nothing: the names
it imports are supplied by the platform of the process that loads it.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzanfe-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzanfe1 (= ${PROJECT_VERSION}-1), zanfe (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"data-model front end of the configuration database context - development files
The C headers of libzanfe's interface (what it exports and what it imports
from the platform), the C++ headers of the reference platform, configuration
loader and engine, their development links, the static reference engine, a
CMake package (find_package(zanfe CONFIG)) and pkg-config files.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zanfe)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/deb/triggers)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libzanfe1 (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"data-model front end of the configuration database context - tools
The zanfe command loads libzanfe the way the data-access engine does and
answers what it registered: tables, columns, path resolution, rendered rows,
keys and types, over the built-in configuration or a JSON file. Also holds
the reference platform and configuration loader zanfe runs on.")

include(CPack)
