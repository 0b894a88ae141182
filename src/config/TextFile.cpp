#include "config/TextFile.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace zel
{

namespace
{

constexpr std::size_t kMaxNameLength = 511;
constexpr std::size_t kMaxTextLength = 0x400000;
constexpr std::size_t kBlockBytes = 16384;
constexpr int kEndOfText = 0x1A;

const unsigned char* Find(const unsigned char* from, const unsigned char* end, int character)
{
    const void* const found = std::memchr(from, character, static_cast<std::size_t>(end - from));
    return found == nullptr ? end : static_cast<const unsigned char*>(found);
}

// Passes the characters from here to the end of the text to `take`, in runs, until it returns false. A CR at
// the end of a block is held back, as the next block decides whether it counts.
template <typename Take>
void TakeText(std::FILE* file, const Take& take)
{
    unsigned char block[kBlockBytes];
    const unsigned char cr = '\r';
    bool isAfterCr = false;
    while (const std::size_t bytes = std::fread(block, 1, sizeof block, file))
    {
        if (isAfterCr && block[0] != '\n' && !take(&cr, 1))
            return;
        const unsigned char* const end = Find(block, block + bytes, kEndOfText);
        const bool isLast = end != block + bytes;
        isAfterCr = !isLast && end[-1] == '\r';
        const unsigned char* const last = isAfterCr ? end - 1 : end;

        const unsigned char* run = block;
        for (const unsigned char* p = Find(run, last, '\r'); p != last; p = Find(p + 1, last, '\r'))
            if (p + 1 != last && p[1] == '\n')
            {
                if (!take(run, static_cast<std::size_t>(p - run)))
                    return;
                run = p + 1;
            }
        if (!take(run, static_cast<std::size_t>(last - run)) || isLast)
            return;
    }
    if (isAfterCr)
        take(&cr, 1);
}

// Stops counting past the largest text.
std::size_t CountText(std::FILE* file)
{
    std::size_t count = 0;
    TakeText(file,
             [&](const unsigned char*, std::size_t length) { return (count += length) <= kMaxTextLength; });
    return count;
}

// Reads `count` characters from the start of the file. False if there are fewer.
bool ReadText(std::FILE* file, char* text, std::size_t count)
{
    std::rewind(file);
    std::size_t read = 0;
    TakeText(file,
             [&](const unsigned char* run, std::size_t length)
             {
                 length = std::min(length, count - read);
                 std::memcpy(text + read, run, length);
                 read += length;
                 return read < count;
             });
    return read == count;
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

bool ReadTextFile(const char* name, std::unique_ptr<char[]>& text)
{
    const File file = OpenTextFile(name);
    if (file == nullptr)
        return false;
    const std::size_t count = CountText(file.get());
    if (count > kMaxTextLength)
        return false;

    text.reset();                     // freed first, so that the two texts are never in memory together
    if (std::ferror(file.get()) != 0) // only a part was counted
        return false;
    text.reset(new (std::nothrow) char[count + 1]);
    if (text == nullptr)
        return false;
    if (!ReadText(file.get(), text.get(), count))
    {
        text.reset();
        return false;
    }
    text[count] = '\0';
    return true;
}

} // namespace zel
