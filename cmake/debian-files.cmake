# What Debian wants in each package besides: licence, changes, compressed manual pages. Run by cpack over what it has
# installed, before it packs. SOURCE_DATE_EPOCH is the time that is told, ORVLOG_DOCUMENTATION a page that goes in too.

if(CPACK_GENERATOR STREQUAL "DEB")
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        set(epoch $ENV{SOURCE_DATE_EPOCH})
    else()
        set(epoch 0)
    endif()
    execute_process(COMMAND date -R -u -d @${epoch} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${CMAKE_CURRENT_LIST_DIR}/../LICENSE licence)
    foreach(component ${CPACK_COMPONENTS_ALL})
        string(TOUPPER ${component} upper)
        set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
        set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
        set(documents ${root}/share/doc/${name})
        set(text "${licence}")
        if(component STREQUAL "commands")
            string(APPEND text "
orvlog-record reads PDF files with poppler and is under the GNU General
Public License, version 2 or later; on Debian systems its text is in
/usr/share/common-licenses/GPL-2. The sources are those of clients/pdf/.
")
        endif()
        file(WRITE ${documents}/copyright "${text}")
        file(WRITE ${documents}/changelog "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * The changes are told in CHANGELOG.md of the sources.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
        if(DEFINED ENV{ORVLOG_DOCUMENTATION} AND NOT component STREQUAL "runtime")
            file(COPY $ENV{ORVLOG_DOCUMENTATION} DESTINATION ${documents})
        endif()
        file(GLOB manual ${root}/share/man/man1/*.1)
        execute_process(COMMAND gzip -9nf ${documents}/changelog ${manual} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endif()
