// Lists the sections of an INI file, or looks a key up by both engines.
//
//     inidump FILE                 prints the section names, one per line
//     inidump FILE SECTION KEY     prints the value found by the indexed and by the direct engine
//
// Exit code 0: found (by at least one engine), 1: no section or no such value, 2: wrong usage.

#include "ZelUtil/INIFileReader.h"

#include <cstdio>

namespace
{

int ListSections(const char* file)
{
    INIFileReader reader;
    CStdStr<char> name;
    if (!reader.getFirstSectionName(file, name))
    {
        std::fprintf(stderr, "inidump: no section can be read from %s\n", file);
        return 1;
    }
    do
        std::printf("%s\n", name.c_str());
    while (reader.getNextSectionName(name));
    return 0;
}

bool PrintValue(INIFileReader& reader, const char* engine, bool indexed, char** arguments)
{
    CStdStr<char> value;
    const bool found =
        reader.getStringFromIni(arguments[1], arguments[2], arguments[3], &value, indexed, false);
    std::printf("%-8s %s%s\n", engine, found ? "= " : "not found", value.c_str());
    return found;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2)
        return ListSections(argv[1]);
    if (argc != 4)
    {
        std::fputs("usage: inidump FILE\n       inidump FILE SECTION KEY\n", stderr);
        return 2;
    }
    INIFileReader reader;
    const bool indexed = PrintValue(reader, "indexed", true, argv);
    const bool direct = PrintValue(reader, "direct", false, argv);
    return indexed || direct ? 0 : 1;
}
