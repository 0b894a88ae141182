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
    // The call cuts what does not fit and does not say so.
    std::string text;
    std::size_t length = 0;
    do
    {
        text.resize(2 * text.size() + 256);
        length = static_cast<std::size_t>(
            LoadStringA(GetModuleHandleA(nullptr), identifier, text.data(), static_cast<int>(text.size())));
    } while (length == text.size() - 1);
    text.resize(length);
    return text;
}

} // namespace zel
