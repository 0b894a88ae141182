#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel
{

/// What a search for files by name means on Windows: "*" is any characters, "?" any one, or none before a "."
/// and at the end; "*.*" is everything; a "." before a wildcard may be missing at the end of a name; a "*"
/// before a "." ends at the name's last "."; dots and blanks at the end of the pattern do not count, but
/// with "*." only names without a "." are meant. Letters A to Z in either case.
class SearchPattern
{
public:
    explicit SearchPattern(std::string_view pattern);

    bool Matches(std::string_view name) const;

private:
    enum class Kind
    {
        Character,
        Any,          ///< any characters
        AnyToLastDot, ///< any characters, but not the last "." of the name
        One,          ///< any character; nothing before a "." and at the end
        DotOrEnd      ///< "."; nothing at the end
    };

    struct Element
    {
        Kind kind;
        char character;
    };

    void Reach(std::vector<bool>& reached, std::string_view rest) const;

    std::vector<Element> m_elements; ///< empty: matches nothing
};

} // namespace zel
