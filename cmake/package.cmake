# The package: what a client includes, links and finds the library by. Its headers declare what the shared library
# exports, the creator that is in the static one alone, and the records that go through them; what a program brings
# along is there with its body.

include(CMakePackageConfigHelpers)
install(TARGETS orvlog orvlog-static EXPORT orvlog-targets
    RUNTIME COMPONENT library LIBRARY COMPONENT library ARCHIVE COMPONENT library)
install(DIRECTORY orvlog/interface DESTINATION ${ORVLOG_HEADERS}/orvlog COMPONENT library FILES_MATCHING PATTERN "*.h")
foreach(header gmm/gmm-allocator gio/gio-stream ggo/ggo-records ger/ger-error-record)
    cmake_path(GET header PARENT_PATH room)
    install(FILES holv-core/${header}.h DESTINATION ${ORVLOG_HEADERS}/holv-core/${room} COMPONENT library)
endforeach()
if(ORVLOG_IMPORT_LIBRARY)
    install(FILES ${ORVLOG_IMPORT_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library)
endif()

# What a program brings along, ready made: included as <orvlog-host.h>, with its parts where the project has them.
install(FILES clients/host/orvlog-host.h DESTINATION ${ORVLOG_HEADERS} COMPONENT library)
install(DIRECTORY clients/host DESTINATION ${ORVLOG_HEADERS}/clients COMPONENT library
    FILES_MATCHING PATTERN "*.h" PATTERN "orvlog-host.h" EXCLUDE)

set(ORVLOG_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/orvlog)
install(EXPORT orvlog-targets NAMESPACE orvlog:: DESTINATION ${ORVLOG_PACKAGE} COMPONENT library)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvlog-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/orvlog-config.cmake ${PROJECT_BINARY_DIR}/orvlog-config-version.cmake
    DESTINATION ${ORVLOG_PACKAGE} COMPONENT library)

# The files for pkg-config find the package from where they stand themselves, so that they're right under any prefix.
# Folders that the builder gave as absolute stay where they are.
set(ORVLOG_PC ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${ORVLOG_PC})
    set(ORVLOG_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH up /prefix/${ORVLOG_PC} /prefix)
    string(REGEX REPLACE "/$" "" ORVLOG_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
    set(ORVLOG_PC_${folder} ${CMAKE_INSTALL_${folder}})
    if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
        set(ORVLOG_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
function(orvlog_pkg_config ORVLOG_PC_NAME ORVLOG_PC_DESCRIPTION ORVLOG_PC_LIBS)
    configure_file(cmake/orvlog.pc.in ${PROJECT_BINARY_DIR}/${ORVLOG_PC_NAME}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${ORVLOG_PC_NAME}.pc DESTINATION ${ORVLOG_PC} COMPONENT library)
endfunction()
orvlog_pkg_config(orvlog "Writes every call of a drawing interface to an XML log and passes it on" "-lorvlog")
# A C compiler that links the static library has to be told of C++'s.
set(runtime "")
foreach(library stdc++ c++ m)
    if(library IN_LIST CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
        string(APPEND runtime " -l${library}")
    endif()
endforeach()
orvlog_pkg_config(orvlog-static "The same as a static library, whose sessions are opened by named options"
    "-lorvlog-static${runtime}")
