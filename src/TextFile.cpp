#include "TextFile.h"

#include "platform/Platform.h"

#include <cstring>

namespace zel
{

namespace
{

constexpr std::size_t kMaxNameLength = 511;
constexpr int kEndOfText = 0x1A;

} // namespace

File OpenTextFile(const char* name)
{
    return File(std::strlen(name) > kMaxNameLength ? nullptr : OpenFile(name, "rb"), std::fclose);
}

int ReadTextCharacter(std::FILE* file)
{
    const int character = std::getc(file);
    if (character == kEndOfText)
    {
        std::ungetc(character, file);
        return EOF;
    }
    if (character != '\r')
        return character;

    const int next = std::getc(file);
    if (next == '\n')
        return next;
    if (next != EOF)
        std::ungetc(next, file);
    return character;
}

std::optional<std::size_t> CountText(std::FILE* file, std::size_t limit)
{
    for (std::size_t count = 0; count <= limit; ++count)
        if (ReadTextCharacter(file) == EOF)
            return count;
    return std::nullopt;
}

bool ReadText(std::FILE* file, char* text, std::size_t count)
{
    std::rewind(file);
    for (std::size_t i = 0; i < count; ++i)
    {
        const int character = ReadTextCharacter(file);
        if (character == EOF)
            return false;
        text[i] = static_cast<char>(character);
    }
    return true;
}

} // namespace zel
