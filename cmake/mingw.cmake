# Builds for Windows by the g++ of mingw-w64 with POSIX threads. The including file sets `processor`.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
set(CMAKE_CXX_COMPILER ${processor}-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER ${processor}-w64-mingw32-gcc-posix) # GoogleTest needs a C compiler
set(CMAKE_RC_COMPILER ${processor}-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${processor}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
