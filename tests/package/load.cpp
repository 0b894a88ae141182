// Loads the DLL that its argument names by its full path and calls one of its functions. This program is
// linked statically, so the compiler's runtime for the DLL has to lie beside the DLL.
#include <ZelUtil/ZelId.h>

#include <windows.h>

#include <cstdio>
#include <cstring>

int main(int, char** argv)
{
    const HMODULE library = LoadLibraryExA(argv[1], nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const FARPROC found = library == nullptr ? nullptr : GetProcAddress(library, "_Z11BinToStringPKvtPc");
    if (found == nullptr)
    {
        std::fprintf(stderr, "%s: error %lu\n", argv[1], GetLastError());
        return 1;
    }
    char text[5];
    reinterpret_cast<decltype(&BinToString)>(reinterpret_cast<void*>(found))("\x12\xAB", 2, text);
    return std::strcmp(text, "12ab") == 0 && FreeLibrary(library) ? 0 : 1;
}
