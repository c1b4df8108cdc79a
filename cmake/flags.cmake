# What every source of the project is compiled with, and nothing of those who use it.

option(ORVLOG_WERROR "Take warnings as errors" OFF)
option(ORVLOG_COVERAGE "Count the lines that run" OFF)
set(ORVLOG_SANITIZE "" CACHE STRING "Sanitizers to build with, as a list: address;undefined")

# Contraction is off so that numbers in a log are the same bits whatever the machine.
add_library(orvlog-flags INTERFACE)
target_compile_options(orvlog-flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${ORVLOG_WERROR}>:-Werror> -ffp-contract=off)
target_include_directories(orvlog-flags INTERFACE ${PROJECT_SOURCE_DIR})

# Code of others that is built here, the test framework, is watched like our own.
set(ORVLOG_INSTRUMENTATION "")
if(ORVLOG_SANITIZE)
    list(JOIN ORVLOG_SANITIZE "," sanitizers)
    list(APPEND ORVLOG_INSTRUMENTATION -fsanitize=${sanitizers} -fno-sanitize-recover=all)
    # MinGW has no library of the sanitizers: what they find is a trap.
    if(MINGW)
        list(APPEND ORVLOG_INSTRUMENTATION -fsanitize-undefined-trap-on-error)
    endif()
    add_compile_options(-fno-omit-frame-pointer)
endif()
if(ORVLOG_COVERAGE)
    list(APPEND ORVLOG_INSTRUMENTATION --coverage)
endif()
add_compile_options(${ORVLOG_INSTRUMENTATION})
add_link_options(${ORVLOG_INSTRUMENTATION})
