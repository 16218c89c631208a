# Debian packages, one for each component: cpack --config build/release/CPackConfig.cmake
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME statuscollector)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The status collector developers")
set(CPACK_PACKAGE_CONTACT "Status collector developers <statuscollector@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL libraries development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CPACK_PACKAGE_CONTACT})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The dependencies of the programs, read from them; our own libraries are no package yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/collector ${PROJECT_BINARY_DIR}/db ${PROJECT_BINARY_DIR}/insight
    ${PROJECT_BINARY_DIR}/model)

# What packages that are built with ours will depend on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# Each description begins with its summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(runtime_package libstatuscollector${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARIES_DESCRIPTION "status of an LED display controller (libraries)
Collects the state of the controller's hardware and the rows of its status
database into one typed document, and renders it as XML.

This package holds the shared libraries libstatuscollector, libstatusinsight,
libstatus and libsqlitedb.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libstatuscollector-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "status of an LED display controller (development)
Collects the state of the controller's hardware and the rows of its status
database into one typed document, and renders it as XML.

This package holds what building a host needs: headers, CMake and pkg-config
files, the document's schema, references of the rows and of the library,
and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME statuscollector-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "status of an LED display controller (command-line host)
Collects the state of the controller's hardware and the rows of its status
database into one typed document.

This package holds the program statuscollector, which shows that document as
text, XML or JSON.")

include(CPack)
