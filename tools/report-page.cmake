# The page of a report is part of the program.
set(page_sources ${PROJECT_SOURCE_DIR}/inspect/report/web)
include(${page_sources}/sources.cmake)
list(TRANSFORM ORVLOG_REPORT_SCRIPTS PREPEND ${page_sources}/)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page_sources}/sources.cmake)
set(report_page ${CMAKE_CURRENT_BINARY_DIR}/report-page.cpp)
# A page is longer than the least that every compiler has to take.
set_source_files_properties(${report_page} PROPERTIES COMPILE_OPTIONS -Wno-overlength-strings)
add_custom_command(OUTPUT ${report_page}
    COMMAND ${CMAKE_COMMAND} -DFOLDER=${page_sources} -DOUTPUT=${report_page}
            -P ${PROJECT_SOURCE_DIR}/cmake/embed-report.cmake
    DEPENDS ${page_sources}/page.html ${page_sources}/report.css ${page_sources}/sources.cmake
            ${ORVLOG_REPORT_SCRIPTS} ${PROJECT_SOURCE_DIR}/cmake/embed-report.cmake
    COMMENT "Putting the page of a report into a source"
    VERBATIM)
target_sources(orvlog-command PRIVATE ${report_page})
