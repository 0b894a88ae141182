#pragma once

#include "system/Platform.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <algorithm>
#include <bit>
#include <string_view>

/// What both engines of the INI reader know about a text. Every text ends with a zero character; a line ends
/// with a line feed or with the text. A blank is a space or a tab.
namespace zel
{

/// The most characters of a section's or a key's name, its delimiters included.
inline constexpr std::size_t kMaxIniName = 255;

/// Converts characters as std::toupper does in the locale that is set when this object is made.
class UpperCase
{
public:
    char operator()(char character) const
    {
        const auto code = static_cast<unsigned char>(character);
        return static_cast<char>(m_table != nullptr ? m_table[code] : std::toupper(code));
    }

private:
    const std::int32_t* m_table = UpperCaseTable();
};

/// The hash of a name. Characters are added one by one, while the name is converted to upper case: reading
/// the converted name back in larger words would stall until its single bytes have reached the cache.
class NameHash
{
public:
    void Add(char character) { m_bits = std::rotl(m_bits, 7) ^ static_cast<unsigned char>(character); }

    std::uint32_t Value() const { return static_cast<std::uint32_t>((m_bits * 0x9E3779B97F4A7C15U) >> 32); }

private:
    std::uint64_t m_bits = 0;
};

/// A requested name in upper case, with the delimiters that it has in a file.
class SearchTerm
{
public:
    /// "[SECTION]" and "KEY=". Empty if longer than kMaxIniName.
    static SearchTerm ForSection(const char* section, UpperCase upper)
    {
        return SearchTerm('[', section, ']', upper);
    }
    static SearchTerm ForKey(const char* key, UpperCase upper) { return SearchTerm('\0', key, '=', upper); }

    bool IsEmpty() const { return m_length == 0; }
    std::uint32_t Hash() const { return m_hash; }

    bool Equals(const char* text, std::size_t length) const
    {
        return length == m_length && std::memcmp(text, m_text, length) == 0;
    }

    /// Whether the text at `p` begins with this term in either letter case. Moves `p` to the first character
    /// that differs, or past the term.
    bool Matches(const char*& p, UpperCase upper) const
    {
        for (std::size_t i = 0; i < m_length; ++i, ++p)
            if (upper(*p) != m_text[i])
                return false;
        return true;
    }

private:
    // A zero for `opening` stands for none.
    SearchTerm(char opening, const char* name, char closing, UpperCase upper)
    {
        // Local copies, because every write to m_text could change the members as far as a compiler can tell.
        NameHash hash;
        std::size_t length = 0;
        if (opening != '\0')
            hash.Add(m_text[length++] = opening);
        for (; *name != '\0'; ++name)
        {
            if (length == kMaxIniName - 1)
                return;
            const char character = upper(*name);
            m_text[length++] = character;
            hash.Add(character);
        }
        m_text[length++] = closing;
        hash.Add(closing);
        m_hash = hash.Value();
        m_length = length;
    }

    char m_text[kMaxIniName]; // left uninitialised after m_length, as clearing costs as much as filling
    std::size_t m_length = 0;
    std::uint32_t m_hash = 0;
};

inline bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

inline const char* SkipBlanks(const char* p)
{
    while (IsBlank(*p))
        ++p;
    return p;
}

/// The line feed that ends the line, or the end of the text.
inline const char* LineEnd(const char* p)
{
    const char* const end = std::strchr(p, '\n');
    return end == nullptr ? p + std::strlen(p) : end;
}

/// The start of the next line, or the end of the text.
inline const char* SkipLine(const char* p)
{
    p = LineEnd(p);
    return *p == '\n' ? p + 1 : p;
}

/// The value that starts at `p`: the rest of the line, cut to `limit` characters, then without the blanks
/// around it.
inline std::string_view ValueAt(const char* p, std::size_t limit)
{
    const char* end = LineEnd(p);
    end = p + std::min(static_cast<std::size_t>(end - p), limit);
    while (end > p && IsBlank(end[-1]))
        --end;
    while (p < end && IsBlank(*p))
        ++p;
    return std::string_view(p, static_cast<std::size_t>(end - p));
}

} // namespace zel
