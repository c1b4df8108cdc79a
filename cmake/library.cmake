# The shared library and the static one, of the same objects. orvlog:: is in front of their names here as in the
# package.

include(GNUInstallDirs)
set(ORVLOG_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/orvlog)

# As install(), for a build whose products are installed.
function(orvlog_install)
    if(ORVLOG_INSTALL)
        install(${ARGV})
    endif()
endfunction()

# For who builds against a library of this project, here or installed.
function(orvlog_for_clients name)
    add_library(orvlog::${name} ALIAS ${name})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/clients/host>
        $<INSTALL_INTERFACE:${ORVLOG_HEADERS}>)
endfunction()

add_library(orvlog SHARED $<TARGET_OBJECTS:orvlog-objects>)
orvlog_for_clients(orvlog)
set_target_properties(orvlog PROPERTIES LINKER_LANGUAGE CXX)
if(WIN32)
    set_target_properties(orvlog PROPERTIES PREFIX "")
    target_sources(orvlog PRIVATE ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.def)
    target_link_options(orvlog PRIVATE -Wl,--gc-sections)

    # The import library for linkers of the other kind, link.exe and lld-link; MinGW's is made with the DLL.
    find_program(ORVLOG_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
    if(ORVLOG_DLLTOOL)
        set(ORVLOG_IMPORT_LIBRARY ${PROJECT_BINARY_DIR}/orvlog.lib)
        add_custom_command(OUTPUT ${ORVLOG_IMPORT_LIBRARY}
            COMMAND ${ORVLOG_DLLTOOL} -m i386:x86-64 -D orvlog.dll -d ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.def
                -l ${ORVLOG_IMPORT_LIBRARY}
            DEPENDS ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.def)
        add_custom_target(orvlog-import-library ALL DEPENDS ${ORVLOG_IMPORT_LIBRARY})
    else()
        message(STATUS "no llvm-dlltool: orvlog.lib isn't made")
    endif()
else()
    target_link_options(orvlog PRIVATE
        -Wl,--version-script=${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.map)
    if(NOT ORVLOG_SANITIZE)
        target_link_options(orvlog PRIVATE -Wl,--no-undefined)
    endif()
    set_property(TARGET orvlog APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/orvlog/core/orvlog.map)
    set_target_properties(orvlog PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
endif()

add_library(orvlog-static STATIC $<TARGET_OBJECTS:orvlog-objects>)
orvlog_for_clients(orvlog-static)
set_target_properties(orvlog-static PROPERTIES LINKER_LANGUAGE CXX)
