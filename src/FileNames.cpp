#include "FileNames.h"

#include <cctype>

namespace zel
{

namespace
{

bool SameLetter(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

} // namespace

std::string_view Extension(std::string_view path)
{
    if (path.size() >= 2 && path[1] == ':')
        path.remove_prefix(2);
    const std::size_t separator = path.find_last_of("\\/");
    if (separator != path.npos)
        path.remove_prefix(separator + 1);

    const std::size_t dot = path.rfind('.');
    return dot == path.npos ? std::string_view() : path.substr(dot);
}

bool MatchesExtension(std::string_view pattern, std::string_view text)
{
    // Where the last "*" stands, and how far the text reaches that it has taken. When the rest does not fit,
    // it takes one character more; an earlier "*" need not be tried again, as any text will do for it.
    std::size_t star = pattern.npos, taken = 0;
    std::size_t p = 0, t = 0;
    while (t < text.size())
    {
        if (p < pattern.size() && pattern[p] == '*')
        {
            star = p++;
            taken = ++t;
        }
        else if (p < pattern.size() && (pattern[p] == '?' || SameLetter(pattern[p], text[t])))
        {
            ++p;
            ++t;
        }
        else if (star != pattern.npos)
        {
            p = star + 1;
            t = ++taken;
        }
        else
            return false;
    }
    return p == pattern.size();
}

} // namespace zel
