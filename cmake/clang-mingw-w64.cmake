# The same as mingw-w64.cmake with clang, which compiles for Windows with the headers and libraries of MinGW-w64.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

# Debian keeps those of GCC in a folder whose name ends in the thread model, which clang doesn't look into.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libstdc++.a
    OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET libraries PARENT_PATH libraries)
set(CMAKE_CXX_FLAGS_INIT
    "-stdlib++-isystem ${libraries}/include/c++ -stdlib++-isystem ${libraries}/include/c++/x86_64-w64-mingw32")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -pthread -L${libraries}")
endforeach()

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
