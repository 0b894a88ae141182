#include "TextFile.h"

#include "platform/Platform.h"

#include <cstring>

namespace zel
{

namespace
{

constexpr std::size_t kMaxNameLength = 511;
constexpr int kEndOfText = 0x1A;

constexpr std::size_t kBlockBytes = 16384;

// Hands the characters from here to the end of the text to `take`, until that gives false.
template <typename Take>
void TakeText(std::FILE* file, const Take& take)
{
    unsigned char block[kBlockBytes];
    bool isAfterCr = false;
    while (const std::size_t bytes = std::fread(block, 1, sizeof block, file))
        for (std::size_t i = 0; i < bytes; ++i)
        {
            const int character = block[i];
            if (isAfterCr && character != '\n' && !take('\r'))
                return;
            isAfterCr = character == '\r';
            if (character == kEndOfText || (!isAfterCr && !take(static_cast<char>(character))))
                return;
        }
    if (isAfterCr)
        take('\r');
}

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
    std::size_t count = 0;
    TakeText(file, [&](char) { return ++count <= limit; });
    return count > limit ? std::nullopt : std::optional(count);
}

bool ReadText(std::FILE* file, char* text, std::size_t count)
{
    std::rewind(file);
    std::size_t read = 0;
    TakeText(file,
             [&](char character)
             {
                 if (read == count)
                     return false;
                 text[read++] = character;
                 return true;
             });
    return read == count;
}

} // namespace zel
