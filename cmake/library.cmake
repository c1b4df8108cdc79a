# The shared library, and the static form for tests and tools. Both are the same objects.

add_library(orvlog SHARED)
target_link_libraries(orvlog PRIVATE orvlog-objects)
target_include_directories(orvlog PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:include/orvlog>)
set_target_properties(orvlog PROPERTIES LINKER_LANGUAGE CXX)
if(WIN32)
    set_target_properties(orvlog PROPERTIES PREFIX "")
    target_sources(orvlog PRIVATE ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.def)
    # The DLL depends on nothing but the system.
    target_link_options(orvlog PRIVATE -static -Wl,--gc-sections)
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

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
install(TARGETS orvlog EXPORT orvlog-targets)
install(DIRECTORY orvlog/interface DESTINATION include/orvlog/orvlog FILES_MATCHING PATTERN "*.h")
install(FILES holv-core/gmm/gmm-allocator.h DESTINATION include/orvlog/holv-core/gmm)
install(FILES holv-core/gio/gio-stream.h DESTINATION include/orvlog/holv-core/gio)
install(FILES holv-core/ggo/ggo-geometry.h DESTINATION include/orvlog/holv-core/ggo)
install(FILES holv-core/ger/ger-error.h DESTINATION include/orvlog/holv-core/ger)
install(EXPORT orvlog-targets FILE orvlog-config.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orvlog)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvlog-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvlog-config-version.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orvlog)
configure_file(cmake/orvlog.pc.in ${PROJECT_BINARY_DIR}/orvlog.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvlog.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
