#include "platform/Platform.h"

#include "ZelUtil/WinTypes.h"

namespace zel
{

std::FILE* OpenFile(const char* path, const char* mode)
{
    const char notInherited[] = {mode[0], mode[1], 'N', '\0'};
    return std::fopen(path, notInherited);
}

std::string StringResource(unsigned identifier)
{
    char text[4096];
    const int length = LoadStringA(GetModuleHandleA(nullptr), identifier, text, sizeof text);
    return std::string(text, static_cast<std::size_t>(length));
}

} // namespace zel
