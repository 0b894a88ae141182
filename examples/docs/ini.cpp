#include <ZelUtil/INIFileReader.h>

#include <cstdio>

int main()
{
    constexpr bool kIndexed = true, kDirect = false, kReload = true;
    INIFileReader reader;
    CStdStr<char> value;
    if (reader.getStringFromIni("sheet.ini", "sheet", "SCALE", &value, kIndexed, !kReload))
        std::printf("scale %s\n", value.c_str());

    // "Caption=" has an empty value: not found for the indexed engine, found for the direct one.
    value = "unchanged";
    bool found = reader.getStringFromIni("sheet.ini", "Overlay", "Caption", &value, kIndexed, !kReload);
    std::printf("indexed: %s, '%s'\n", found ? "found" : "not found", value.c_str());
    found = reader.getStringFromIni("sheet.ini", "Overlay", "Caption", &value, kDirect, kReload);
    std::printf("direct: %s, '%s'\n", found ? "found" : "not found", value.c_str());

    CStdStr<char> name;
    for (bool more = reader.getFirstSectionName("sheet.ini", name); more;
         more = reader.getNextSectionName(name))
        std::printf("[%s]\n", name.c_str());
    return 0;
}
