# Builds for 64-bit Windows; programs run under Wine where it is installed.
set(processor x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
find_program(WINE NAMES wine wine64)
if(WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE})
endif()
