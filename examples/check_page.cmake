# Checks that a page quotes a program, or another file, without a difference:
#   cmake -DPAGE=page.md -DPROGRAM=program.cpp -P check_page.cmake
file(READ ${PAGE} page)
file(READ ${PROGRAM} program)
string(FIND "${page}" "\n${program}```\n" place)
if(place EQUAL -1)
    message(FATAL_ERROR "${PAGE} does not quote ${PROGRAM} as it is")
endif()
