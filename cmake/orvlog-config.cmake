# find_package(orvlog) gives the target orvlog::orvlog.
include(${CMAKE_CURRENT_LIST_DIR}/orvlog-targets.cmake)
