# What cpack makes of an installation: Debian packages of the library, of what is built against it, of the commands and
# of the package for Python.
# scripts/package makes them, and the archives of sources and for Windows besides.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvlog)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "ORVLOG")
set(CPACK_PACKAGE_CONTACT "The ORVLOG founders <founders@orvlog.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian-files.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL ${ORVLOG_RUNTIME_COMPONENT} library)
if(ORVLOG_TOOLS AND NOT WIN32)
    list(APPEND CPACK_COMPONENTS_ALL commands)
endif()
if(DEFINED ORVLOG_PYTHON_MINOR)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
list(REMOVE_DUPLICATES CPACK_COMPONENTS_ALL)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liborvlog1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs "liborvlog 1 liborvlog1 (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "logger of a drawing interface
Sits between the page-description side of a printer driver and its
renderer, passes each drawing call on unchanged and writes a complete
XML record of the job.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liborvlog-dev)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "liborvlog1 (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "logger of a drawing interface, development files
Headers, static libraries and package files for programs that log the
calls of the drawing interface.")

set(CPACK_DEBIAN_COMMANDS_PACKAGE_NAME orvlog)
set(CPACK_DEBIAN_COMMANDS_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_COMMANDS_DESCRIPTION "logs of a drawing interface: record, read, replay
The orvlog command logs the drawing calls of a document, tells what a
log holds, replays it, and finds the call behind a wrong pixel.")

# The module is built for one version of Python.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orvlog)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
if(DEFINED ORVLOG_PYTHON_MINOR)
    math(EXPR next "${ORVLOG_PYTHON_MINOR} + 1")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.${ORVLOG_PYTHON_MINOR}), python3 (<< 3.${next})")
endif()
# What Python compiles beside the package goes with it.
file(WRITE ${PROJECT_BINARY_DIR}/debian/python/postinst "#!/bin/sh
set -e
if command -v py3compile >/dev/null 2>&1; then
    py3compile -p python3-orvlog
fi
")
file(WRITE ${PROJECT_BINARY_DIR}/debian/python/prerm "#!/bin/sh
set -e
if command -v py3clean >/dev/null 2>&1; then
    py3clean -p python3-orvlog
fi
")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/python/postinst ${PROJECT_BINARY_DIR}/debian/python/prerm)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "logs of a drawing interface, package for Python
Reads the logs of the drawing interface: pages, calls, images and paths as
objects, and pages drawn again.")
include(CPack)
