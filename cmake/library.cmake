# The shared library, and the static form for tests and tools. Both are the same objects.

include(GNUInstallDirs)
set(ORVLOG_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/orvlog)

add_library(orvlog SHARED)
target_link_libraries(orvlog PRIVATE orvlog-objects)
target_include_directories(orvlog PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${ORVLOG_HEADERS}>)
set_target_properties(orvlog PROPERTIES LINKER_LANGUAGE CXX)
if(WIN32)
    set_target_properties(orvlog PROPERTIES PREFIX "")
    target_sources(orvlog PRIVATE ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.def)
    target_link_options(orvlog PRIVATE -Wl,--gc-sections)
else()
    target_link_options(orvlog PRIVATE
        -Wl,--version-script=${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.map)
    if(NOT CMAKE_CXX_FLAGS MATCHES "sanitize")
        target_link_options(orvlog PRIVATE -Wl,--no-undefined)
    endif()
    set_property(TARGET orvlog APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.map)
    set_target_properties(orvlog PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
endif()

add_library(orvlog-static STATIC)
target_link_libraries(orvlog-static PUBLIC orvlog-objects)
target_include_directories(orvlog-static PUBLIC ${PROJECT_SOURCE_DIR})
set_target_properties(orvlog-static PROPERTIES LINKER_LANGUAGE CXX)

# The package: what a client includes, links and finds the library by. Its headers declare what the library exports
# and the records that go through it, and no function besides.
include(CMakePackageConfigHelpers)
install(TARGETS orvlog EXPORT orvlog-targets
    RUNTIME COMPONENT library LIBRARY COMPONENT library ARCHIVE COMPONENT library)
install(DIRECTORY orvlog/interface DESTINATION ${ORVLOG_HEADERS}/orvlog COMPONENT library FILES_MATCHING PATTERN "*.h")
foreach(header gmm/gmm-allocator gio/gio-stream ggo/ggo-records ger/ger-error-record)
    cmake_path(GET header PARENT_PATH room)
    install(FILES holv-core/${header}.h DESTINATION ${ORVLOG_HEADERS}/holv-core/${room} COMPONENT library)
endforeach()

set(ORVLOG_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/orvlog)
install(EXPORT orvlog-targets NAMESPACE orvlog:: DESTINATION ${ORVLOG_PACKAGE} COMPONENT library)
install(FILES cmake/orvlog-config.cmake DESTINATION ${ORVLOG_PACKAGE} COMPONENT library)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvlog-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvlog-config-version.cmake DESTINATION ${ORVLOG_PACKAGE}
    COMPONENT library)

# The file for pkg-config finds the package from where it stands itself, so that it's right under any prefix. Folders
# that the builder gave as absolute stay where they are.
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
configure_file(cmake/orvlog.pc.in ${PROJECT_BINARY_DIR}/orvlog.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvlog.pc DESTINATION ${ORVLOG_PC} COMPONENT library)
