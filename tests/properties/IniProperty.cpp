// The INI reader and its text mode against a model that has no state and no pointers.

#include "Properties.h"

#include "ZelUtil/INIFileReader.h"

#include <cctype>
#include <map>
#include <set>

using namespace test;

namespace
{

using Text = std::string;
using Values = std::map<std::pair<Text, Text>, Text>;

const char* const kNone = "\x1A"; // as a result: no value; no text has this character

std::size_t NextLine(const Text& text, std::size_t at)
{
    return std::min(text.find('\n', at), text.size() - 1) + 1;
}

// The lines with their line ends, in pieces of at most `limit` characters.
std::vector<Text> Lines(const Text& text, std::size_t limit = Text::npos)
{
    std::vector<Text> lines;
    for (std::size_t from = 0; from < text.size(); from += lines.back().size())
        lines.push_back(text.substr(from, std::min(limit, NextLine(text, from) - from)));
    return lines;
}

Text Upper(Text text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

Text ValueOf(const Text& text, bool isIndexed)
{
    Text value = text.substr(0, std::min<std::size_t>(text.find('\n'), 511));
    value.erase(0, value.find_first_not_of(" \t"));
    value.erase(value.find_last_not_of(" \t") + 1);
    if (isIndexed && value.ends_with('\r'))
        value.pop_back();
    return isIndexed && value.empty() ? kNone : value;
}

// By "[SECTION]" and "KEY=". Of equal names the first counts, and a text with a malformed line has no value.
Values IndexedModel(const Text& text)
{
    Values values;
    Text section;
    for (const Text& whole : Lines(text))
    {
        const Text line = whole.substr(std::min(whole.find_first_not_of(" \t"), whole.size()));
        const bool isHeader = line[0] == '[';
        if (!isHeader && (section.empty() || line[0] == ';' || line[0] == '\r' || line[0] == '\n'))
            continue;
        const std::size_t last = line.find_first_of(isHeader ? "]\n" : "=\n");
        if (last > 254 || line[last] == '\n')
            return {};
        const Text name = Upper(line.substr(0, last + 1));
        if (isHeader)
            section = values.emplace(std::pair(name, ""), "").second ? name : kNone;
        else
            values.emplace(std::pair(section, name), ValueOf(line.substr(last + 1), true));
    }
    return values;
}

// Returns whether `term` is at `at`. If so, moves `at` past it; otherwise to where the search continues.
bool Step(const Text& text, std::size_t& at, const Text& term)
{
    std::size_t same = 0;
    while (same < term.size() && Upper(text.substr(at, 1)) == Upper(term.substr(same, 1)))
        ++same, ++at;
    const bool isFound = same == term.size();
    if (!isFound)
        at = text[at] == ' ' || text[at] == '\t' ? at + 1 : NextLine(text, at);
    return isFound;
}

Text DirectModel(const Text& text, const Text& section, const Text& key)
{
    std::size_t at = 0;
    bool isFound = false;
    while (!isFound && at < text.size())
        isFound = Step(text, at, text[at] == '[' ? "[" + section + "]" : kNone);
    at = NextLine(text, at);
    for (isFound = false; !isFound && at < text.size() && text[at] != '[';)
        isFound = Step(text, at, text[at] == ';' || text[at] == '\r' ? kNone : key + "=");
    return isFound && section.size() < 254 && key.size() < 255 ? ValueOf(text.substr(at), false) : kNone;
}

std::vector<Text> ListingModel(const Text& text)
{
    std::vector<Text> names;
    for (const Text& piece : Lines(text, 511))
    {
        const Text line = piece.substr(0, piece.find('\0'));
        const std::size_t first = line.find_first_not_of(" \t\v\f\r\n"), end = line.find(']');
        if (first == Text::npos || line[first] != '[')
            continue;
        // A header on the last line is not listed if the line has no line feed, unless it is the first name
        // or its piece is full.
        if (!names.empty() && piece.back() != '\n' && piece.size() < 511)
            break;
        names.push_back(end == Text::npos ? "" : line.substr(first + 1, end - first - 1));
    }
    return names;
}

} // namespace

// The first byte says how the others are taken: bit 0 asks in upper case; bit 1 makes every byte one of the
// tokens; bit 2 puts the end of the reader's first block into the file, (byte >> 3) characters from its
// start.
void property::Ini(Input input)
{
    const Text tokens[] = {
        "[a]\n", "\n[A]\n", "[b ]", "\n[", "]",     "\na=", "\nB = ", "\nab=", "\na ab=", "\n;",
        "=",     "a",       "b",    "a b", "a=",    " ",    "\t",     ";",     "\r",      "\r\n",
        "\n",    "x",       "\xE4", "[",   "\nc=#", "\v",   "\x1A=",  "\r\r\n"};
    const int mode = input.Byte();
    const auto cased = [mode](const Text& name) { return (mode & 1) != 0 ? Upper(name) : name; };
    const auto any = [&]
    {
        const Bytes bytes = input.Take(static_cast<std::size_t>(input.Below(4)));
        return cased(Text(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)));
    };
    std::set<Text> sections = {any()}, keys = {any()};

    Text file = (mode & 4) != 0 ? ";" + Text(static_cast<std::size_t>(16382 - (mode >> 3)), '.') + "\n" : "";
    for (const unsigned char byte : (mode & 2) != 0 ? input.Take(24) : input.Rest())
        file += (mode & 2) != 0 ? tokens[byte % std::size(tokens)] : Text(1, static_cast<char>(byte));
    Text text = file.substr(0, file.find('\x1A')); // which ends a text; CR LF is one character
    for (std::size_t at = 0; (at = text.find("\r\n", at)) != Text::npos; ++at)
        text.erase(at, 1);
    const Text path = Scratch(Bytes(file.begin(), file.end())), engineText = text.substr(0, text.find('\0'));

    // Names that may be found: of sections between brackets, of keys before "=", also after blanks.
    for (const Text& line : Lines(engineText))
    {
        const std::size_t name = line.find('[') + 1, end = line.find('=') + 1; // 0 where there is none
        if (name > 0 && sections.size() < 4)
            sections.insert(cased(line.substr(name, line.find(']', name) - name)));
        for (std::size_t from = 0; from < end && keys.size() < 7; from = line.find_first_of(" \t=", from) + 1)
            keys.insert(cased(line.substr(from, end - 1 - from)));
    }

    INIFileReader reader;
    Values values = IndexedModel(engineText);
    for (const Text& section : sections)
        for (const Text& key : keys)
            for (const bool isIndexed : {true, false})
            {
                const Text indexed =
                    values.try_emplace({Upper("[" + section + "]"), Upper(key + "=")}, kNone).first->second;
                const Text expected = isIndexed ? indexed : DirectModel(engineText, section, key);
                CStdStr<char> value = kNone; // where the direct engine finds nothing, it clears the value
                const bool isFound = reader.getStringFromIni(path, section, key, &value, isIndexed, false);
                Require(isFound == (expected != kNone) && value == (isFound || isIndexed ? expected : ""),
                        isIndexed ? "the index finds what is there" : "the scan finds what is there");
            }

    std::vector<Text> names;
    CStdStr<char> next;
    for (bool more = reader.getFirstSectionName(path, next); more; more = reader.getNextSectionName(next))
        names.push_back(next);
    Require(names == ListingModel(text) && next == (names.empty() ? "" : names.back()),
            "the listing is the model's and its end changes no name");
}
