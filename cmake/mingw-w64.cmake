# Cross-builds for 64-bit Windows with MinGW-w64 and its posix thread model; tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Beside what Debian has for MinGW, what scripts/windows-libraries leaves.
cmake_path(SET ORVLOG_WINDOWS_LIBRARIES NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${ORVLOG_WINDOWS_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/run-under-wine)
# Programs and the DLL bring the compiler's own libraries along.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
