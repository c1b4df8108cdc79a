# find_package(orvlog) gives the targets orvlog::orvlog, the shared library, orvlog::orvlog-static, and
# orvlog::orvlog-stream if it was built. Each is a component that can be asked for by its name.
include(${CMAKE_CURRENT_LIST_DIR}/orvlog-targets.cmake)
foreach(component ${orvlog_FIND_COMPONENTS})
    set(orvlog_${component}_FOUND FALSE)
    if(TARGET orvlog::${component})
        set(orvlog_${component}_FOUND TRUE)
    elseif(orvlog_FIND_REQUIRED_${component})
        set(orvlog_FOUND FALSE)
        string(APPEND orvlog_NOT_FOUND_MESSAGE "The package orvlog has no component ${component}. ")
    endif()
endforeach()
