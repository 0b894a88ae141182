// The INI reader and its text mode against a model that has no state and no pointers.

#include "Properties.h"

#include "ZelUtil/INIFileReader.h"

#include <cctype>
#include <optional>
#include <set>

using namespace test;

namespace
{

using Text = std::string;
using Found = std::optional<Text>; // a value, or none

Text TextMode(const Text& file)
{
    Text text;
    for (std::size_t i = 0; i < file.size() && file[i] != 0x1A; ++i)
        if (file.substr(i, 2) != "\r\n")
            text += file[i];
    return text;
}

// The lines with their line ends, in pieces of at most `limit` characters.
std::vector<Text> Lines(const Text& text, std::size_t limit = Text::npos)
{
    std::vector<Text> lines;
    for (std::size_t from = 0; from < text.size(); from += lines.back().size())
        lines.push_back(
            text.substr(from, std::min(limit, std::min(text.find('\n', from), text.size() - 1) - from + 1)));
    return lines;
}

Text Upper(Text text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

Text ValueOf(const Text& text)
{
    const Text value = text.substr(0, std::min<std::size_t>(text.find('\n'), 511));
    const std::size_t first = value.find_first_not_of(" \t"), last = value.find_last_not_of(" \t");
    return first == Text::npos ? "" : value.substr(first, last - first + 1);
}

Found IndexedModel(const Text& text, const Text& section, const Text& key)
{
    Found value;
    bool inSection = false, isWanted = false, wasWanted = false;
    for (const Text& whole : Lines(text))
    {
        const Text line = whole.substr(std::min(whole.find_first_not_of(" \t"), whole.size()));
        const bool isHeader = line[0] == '[';
        if (!isHeader && (!inSection || line[0] == ';' || line[0] == '\r' || line[0] == '\n'))
            continue;
        const std::size_t last = line.find_first_of(isHeader ? "]\n" : "=\n");
        if (last > 254 || line[last] == '\n')
            return {};
        const Text name = Upper(line.substr(0, last + 1));
        if (isHeader)
        {
            isWanted = !wasWanted && name == Upper("[" + section + "]");
            wasWanted = wasWanted || isWanted;
            inSection = true;
        }
        else if (isWanted && !value.has_value() && name == Upper(key + "="))
            value = ValueOf(line.substr(last + 1));
    }
    if (value.has_value() && value->ends_with('\r'))
        value->pop_back();
    return value.has_value() && value->empty() ? Found() : value;
}

std::size_t NextLine(const Text& text, std::size_t at)
{
    return std::min(text.find('\n', at), text.size() - 1) + 1;
}

// Whether `term` is at this place, which moves past it; else to where the search goes on.
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

Found DirectModel(const Text& text, const Text& section, const Text& key)
{
    const Text none = "\x1A"; // no text has it
    std::size_t at = 0;
    bool isFound = false;
    while (!isFound && at < text.size())
        isFound = Step(text, at, text[at] == '[' ? "[" + section + "]" : none);
    at = NextLine(text, at);
    for (isFound = false; !isFound && at < text.size() && text[at] != '[';)
        isFound = Step(text, at, text[at] == ';' || text[at] == '\r' ? none : key + "=");
    return isFound && section.size() < 254 && key.size() < 255 ? ValueOf(text.substr(at)) : Found();
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
        if (!names.empty() && piece.back() != '\n' && piece.size() < 511)
            break;
        names.push_back(end == Text::npos ? "" : line.substr(first + 1, end - first - 1));
    }
    return names;
}

// Names that may be found: of sections between brackets, of keys before "=", also after blanks.
void CollectNames(const Text& text, std::set<Text>& sections, std::set<Text>& keys)
{
    for (const Text& line : Lines(text))
    {
        const std::size_t bracket = line.find('['), equals = line.find('=');
        if (bracket != Text::npos && sections.size() < 4)
            sections.insert(line.substr(bracket + 1, line.find(']', bracket) - bracket - 1));
        for (std::size_t from = 0; equals != Text::npos && from <= equals && keys.size() < 7;)
        {
            keys.insert(line.substr(from, equals - from));
            from = line.find_first_of(" \t=", from) + 1;
        }
    }
}

Text OtherCase(Text text)
{
    for (char& c : text)
        c = static_cast<char>((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ? c ^ 0x20 : c);
    return text;
}

} // namespace

// The first byte says how the others are taken: bit 0 asks in the other letter case; bit 1 makes every byte
// one of the tokens; bit 2 puts the end of the reader's first block into the file, (byte >> 3) characters
// from its start.
void property::Ini(Input input)
{
    const Text tokens[] = {
        "[a]\n", "\n[A]\n", "[b ]", "\n[", "]",     "\na=", "\nB = ", "\nab=", "\na ab=", "\n;",
        "=",     "a",       "b",    "a b", "a=",    " ",    "\t",     ";",     "\r",      "\r\n",
        "\n",    "x",       "\xE4", "[",   "\nc=#", "\v",   "\x1A=",  "\r\r\n"};
    const int mode = input.Byte();
    const auto name = [&input]
    {
        const Bytes bytes = input.Take(static_cast<std::size_t>(input.Below(4)));
        return Text(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    };
    std::set<Text> sections = {name()}, keys = {name()};

    Text file = (mode & 4) != 0 ? ";" + Text(static_cast<std::size_t>(16382 - (mode >> 3)), '.') + "\n" : "";
    for (const unsigned char byte : (mode & 2) != 0 ? input.Take(24) : input.Rest())
        file += (mode & 2) != 0 ? tokens[byte % std::size(tokens)] : Text(1, static_cast<char>(byte));
    const Text path = Scratch(Bytes(file.begin(), file.end())), text = TextMode(file),
               engineText = text.substr(0, text.find('\0'));
    CollectNames(engineText, sections, keys);

    INIFileReader reader;
    for (const Text& section : sections)
        for (const Text& key : keys)
            for (const bool isIndexed : {true, false})
            {
                const Found expected = (isIndexed ? IndexedModel : DirectModel)(engineText, section, key);
                const bool isOther = (mode & 1) != 0;
                CStdStr<char> value = "as it was";
                const bool isFound =
                    reader.getStringFromIni(path, isOther ? OtherCase(section) : section,
                                            isOther ? OtherCase(key) : key, &value, isIndexed, false);
                Require(isFound == expected.has_value(),
                        isIndexed ? "the index finds it" : "the scan finds it");
                Require(value == expected.value_or(isIndexed ? "as it was" : ""), "the value is the model's");
            }

    std::vector<Text> names;
    CStdStr<char> next;
    for (bool more = reader.getFirstSectionName(path, next); more; more = reader.getNextSectionName(next))
        names.push_back(next);
    Require(names == ListingModel(text), "the listing is the model's");
}
