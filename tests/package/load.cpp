// Loads the DLL that its argument names, at run time and by its full path, and calls what it finds in it.
// The compiler's runtime has to lie beside the DLL: this program has its own inside.
#include <ZelUtil/ZelId.h>

#include <windows.h>

#include <cstdio>
#include <cstring>

int main(int, char** argv)
{
    const HMODULE library = LoadLibraryExA(argv[1], nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr)
    {
        std::fprintf(stderr, "%s: error %lu\n", argv[1], GetLastError());
        return 1;
    }
    const FARPROC found = GetProcAddress(library, "_Z11BinToStringPKvtPc");
    if (found == nullptr)
    {
        std::fprintf(stderr, "BinToString is not exported\n");
        return 1;
    }
    char text[5];
    reinterpret_cast<decltype(&BinToString)>(reinterpret_cast<void*>(found))("\x12\xAB", 2, text);
    const bool good = std::strcmp(text, "12ab") == 0;
    if (!good)
        std::fprintf(stderr, "BinToString gives %s\n", text);
    FreeLibrary(library);
    return good ? 0 : 1;
}
