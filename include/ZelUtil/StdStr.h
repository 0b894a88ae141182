#pragma once

#include "ZelUtil/Export.h"

#include <string>

/// Only CStdStr<char> exists.
template <typename CharT>
class CStdStr;

/// The string type of the whole interface: a narrow standard string with a few conveniences. It is made from
/// a text or from another string; all that std::string does with a string then works here too, ordering and
/// comparison (byte by byte) included.
template <>
class ZELUTIL_API CStdStr<char> : public std::string
{
public:
    CStdStr() = default;
    CStdStr(const std::string& text);

    /// Copies a terminated text. Null gives the empty string. A pointer value below 65536 is the identifier
    /// of a string resource: its text on Windows (of the running program), the empty string elsewhere and
    /// where there is no such resource.
    CStdStr(const char* text);

    /// Null empties the string. `text` may point into this string: the tail from there on is kept.
    CStdStr& operator=(const char* text);
    using std::string::operator=;

    /// Null appends nothing.
    CStdStr& operator+=(const char* text);
    CStdStr& operator+=(const std::string& text);
    using std::string::operator+=;

    /// Less than, equal to or greater than 0 as this string is before, equal to or behind `text`, byte by
    /// byte. Null counts as the empty text.
    int Compare(const char* text) const;
    int Compare(const std::string& text) const;

    /// Position of the first place where `text` stands; -1 where it does not, and for null.
    int Find(const char* text) const;
    int Find(const std::string& text) const;

    /// Position of the last `character`, or -1.
    int ReverseFind(char character) const;

    /// The `count` characters from `start` on, clipped at the end. Negative arguments count as 0.
    CStdStr Mid(int start, int count) const;
    /// Everything from `start` on.
    CStdStr Mid(int start) const;

    /// Remove leading or trailing white space, as the current C locale classes it. Give this string.
    CStdStr& TrimLeft();
    CStdStr& TrimRight();
};
