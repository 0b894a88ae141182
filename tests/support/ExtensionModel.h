#pragma once

#include <cctype>

namespace test
{

/// How an extension matches a pattern, by its definition, step by step.
inline bool Matches(const char* p, const char* s)
{
    if (*s == '\0')
        return *p == '\0';
    if (*p == '\0')
        return false;
    if (*p == '?')
        return p[1] == '\0' ? s[1] == '\0' : Matches(p + 1, s + 1);
    if (*p == '*')
        return p[1] == '\0' || Matches(p + 1, s + 1) || Matches(p, s + 1);
    if (std::tolower(static_cast<unsigned char>(*p)) != std::tolower(static_cast<unsigned char>(*s)))
        return false;
    return p[1] == '\0' ? s[1] == '\0' : Matches(p + 1, s + 1);
}

} // namespace test
