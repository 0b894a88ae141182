#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Text mode, both engines of the INI reader and its listing once more, over whole strings and without any
/// state.
namespace test
{

using Text = std::string;
using Found = std::optional<Text>; // a value, or none

inline Text TextMode(const Text& file)
{
    Text text;
    for (std::size_t i = 0; i < file.size() && file[i] != 0x1A; ++i)
        if (file[i] != '\r' || i + 1 == file.size() || file[i + 1] != '\n')
            text += file[i];
    return text;
}

inline Text UpperText(Text text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

inline Text TrimBlanks(const Text& text)
{
    const std::size_t first = text.find_first_not_of(" \t"), last = text.find_last_not_of(" \t");
    return first == Text::npos ? "" : text.substr(first, last - first + 1);
}

// A zero byte ends the text for both engines.
inline Text EngineText(const Text& file)
{
    const Text text = TextMode(file);
    return text.substr(0, text.find('\0'));
}

struct Line
{
    Text text;
    bool hasEnd;
};

inline std::vector<Line> Lines(const Text& text)
{
    std::vector<Line> lines;
    for (std::size_t from = 0; from < text.size();)
    {
        const std::size_t end = text.find('\n', from);
        lines.push_back({text.substr(from, end - from), end != Text::npos});
        from = end == Text::npos ? text.size() : end + 1;
    }
    return lines;
}

inline Found IndexedModel(const Text& file, const Text& section, const Text& key)
{
    Found value;
    bool inSection = false, inWanted = false, wantedSeen = false;
    for (const auto& [line, hasEnd] : Lines(EngineText(file)))
    {
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == Text::npos)
        {
            if (inSection && !hasEnd)
                return {};
            continue;
        }
        const Text rest = line.substr(first);
        if (rest[0] == '[')
        {
            const std::size_t end = rest.find(']');
            if (end == Text::npos || end > 254)
                return {};
            inSection = true;
            inWanted = !wantedSeen && UpperText(rest.substr(1, end - 1)) == UpperText(section);
            wantedSeen = wantedSeen || inWanted;
        }
        else if (inSection && rest[0] != ';' && rest[0] != '\r')
        {
            const std::size_t equals = rest.find('=');
            if (equals == Text::npos || equals > 254)
                return {};
            if (!inWanted || value.has_value() || UpperText(rest.substr(0, equals)) != UpperText(key))
                continue;
            value = TrimBlanks(rest.substr(equals + 1).substr(0, 511));
            if (!value->empty() && value->back() == '\r')
                value->pop_back();
        }
    }
    return value.has_value() && value->empty() ? Found() : value;
}

// Where a search that did not find `pattern` at `at` looks next; `found` tells whether it did. No text has
// 0x1A.
inline std::size_t Step(const Text& text, std::size_t at, const Text& pattern, bool& found)
{
    std::size_t same = 0;
    while (same < pattern.size() && at + same < text.size() &&
           UpperText({text[at + same]}) == UpperText({pattern[same]}))
        ++same;
    found = same == pattern.size();
    at += same;
    if (found || (at < text.size() && (text[at] == ' ' || text[at] == '\t')))
        return found ? at : at + 1;
    const std::size_t end = text.find('\n', at);
    return end == Text::npos ? text.size() : end + 1;
}

inline Found DirectModel(const Text& file, const Text& section, const Text& key)
{
    if (section.size() > 253 || key.size() > 254)
        return {};
    const Text text = EngineText(file);
    bool found = false;
    std::size_t at = 0;
    while (!found && at < text.size())
        at = Step(text, at, text[at] == '[' ? "[" + section + "]" : "\x1A", found);
    if (!found)
        return {};
    const std::size_t end = text.find('\n', at);
    at = end == Text::npos ? text.size() : end + 1;
    for (found = false; !found && at < text.size();)
    {
        if (text[at] == '[')
            return {};
        at = Step(text, at, text[at] == ';' || text[at] == '\r' ? "\x1A" : key + "=", found);
    }
    return found ? TrimBlanks(text.substr(at, text.find('\n', at) - at).substr(0, 511)) : Found();
}

// Lines in pieces of 511 characters, of which only what stands before a zero byte counts.
inline std::vector<Line> Pieces(const Text& text)
{
    std::vector<Line> pieces;
    for (const auto& [line, hasEnd] : Lines(text))
    {
        const Text whole = hasEnd ? line + '\n' : line;
        for (std::size_t from = 0; from < whole.size(); from += 511)
        {
            const Text piece = whole.substr(from, 511);
            pieces.push_back({piece.substr(0, piece.find_first_of(Text("\n\0", 2))),
                              piece.back() == '\n' || piece.size() == 511});
        }
    }
    return pieces;
}

inline std::vector<Text> ListingModel(const Text& file)
{
    std::vector<Text> names;
    for (const auto& [line, hasEnd] : Pieces(TextMode(file)))
    {
        const std::size_t first = line.find_first_not_of(" \t\v\f\r");
        if (first == Text::npos || line[first] != '[')
            continue;
        if (!hasEnd && !names.empty())
            break;
        const std::size_t end = line.find(']', first);
        names.push_back(end == Text::npos ? "" : line.substr(first + 1, end - first - 1));
    }
    return names;
}

} // namespace test
