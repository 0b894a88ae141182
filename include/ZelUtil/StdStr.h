#pragma once

#include "ZelUtil/Export.h"

#include <string>

/// Only the specialisation for char exists.
template <typename CharT>
class CStdStr;

/// The string type of the whole interface: a std::string with a few conveniences. Everything that std::string
/// offers works here too, including comparison and ordering, which are byte-wise.
template <>
class ZELUTIL_API CStdStr<char> : public std::string
{
public:
    CStdStr() = default;
    CStdStr(const std::string& text);

    /// Copies a zero-terminated text. Null gives the empty string. A pointer value below 65536 is the
    /// identifier of a string resource: on Windows its text is loaded from the running program, if it is
    /// there; otherwise, and on other systems, the string is empty.
    CStdStr(const char* text);

    /// Null empties the string. `text` may point into this string, which then keeps its tail from there.
    CStdStr& operator=(const char* text);
    using std::string::operator=;

    /// Null appends nothing.
    CStdStr& operator+=(const char* text);
    CStdStr& operator+=(const std::string& text);
    using std::string::operator+=;

    /// Compares byte by byte. The result is negative, zero or positive if this string is less than, equal to
    /// or greater than `text`. Null counts as the empty text.
    int Compare(const char* text) const;
    int Compare(const std::string& text) const;

    /// The position where `text` first occurs; -1 if it does not, and for null.
    int Find(const char* text) const;
    int Find(const std::string& text) const;

    /// The position where `character` last occurs, or -1.
    int ReverseFind(char character) const;

    /// Up to `count` characters from position `start`. Negative arguments count as 0.
    CStdStr Mid(int start, int count) const;
    /// All characters from position `start`.
    CStdStr Mid(int start) const;

    /// Remove leading or trailing white space, as classified by the current C locale. Return this string.
    CStdStr& TrimLeft();
    CStdStr& TrimRight();
};
