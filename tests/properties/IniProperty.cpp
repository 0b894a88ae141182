// Both engines of the INI reader and its listing against their model.

#include "Properties.h"

#include "IniModel.h"
#include "ZelUtil/INIFileReader.h"

#include <set>

using namespace test;
using test::Found;
using test::Text;

namespace
{

// Names that may be found in the file: of sections between brackets, of keys before "=", also behind blanks.
void CollectNames(const Text& file, std::set<Text>& sections, std::set<Text>& keys)
{
    for (const auto& [line, hasEnd] : test::Lines(test::EngineText(file)))
    {
        const std::size_t first = std::min(line.find_first_not_of(" \t"), line.size());
        if (first < line.size() && line[first] == '[' && sections.size() < 4)
            sections.insert(line.substr(first + 1, line.find(']', first) - first - 1));
        const std::size_t equals = line.find('=');
        for (std::size_t from = first; equals != Text::npos && from < equals && keys.size() < 6;)
        {
            keys.insert(line.substr(from, equals - from));
            const std::size_t blank = line.find_first_of(" \t", from);
            from = blank == Text::npos ? equals : blank + 1;
        }
    }
}

Text OtherCase(Text text)
{
    for (char& c : text)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))
            c = static_cast<char>(c ^ 0x20);
    return text;
}

} // namespace

void property::Ini(Input input)
{
    const unsigned order = input.Byte();
    const Text section = input.Text(), key = input.Text();
    const Bytes rest = input.Rest();
    const Text file(rest.begin(), rest.end()), path = Scratch(rest);

    std::set<Text> sections = {section}, keys = {key};
    CollectNames(file, sections, keys);
    INIFileReader reader;
    const auto ask = [&](const Text& inSection, const Text& forKey, bool isIndexed)
    {
        const Found expected = isIndexed ? test::IndexedModel(file, inSection, forKey)
                                         : test::DirectModel(file, inSection, forKey);
        CStdStr<char> value = "as it was";
        const bool isFound =
            reader.getStringFromIni(path, inSection, forKey, &value, isIndexed, (order & 2) != 0);
        Require(isFound == expected.has_value(), isIndexed ? "the index finds it" : "the scan finds it");
        Require(value == expected.value_or(isIndexed ? "as it was" : ""), "the value is the model's");
    };
    for (const Text& s : sections)
        for (const Text& k : keys)
            for (const bool isIndexed : {(order & 1) != 0, (order & 1) == 0})
                ask((order & 4) != 0 ? OtherCase(s) : s, (order & 8) != 0 ? OtherCase(k) : k, isIndexed);

    std::vector<Text> names;
    CStdStr<char> name;
    for (bool more = reader.getFirstSectionName(path, name); more; more = reader.getNextSectionName(name))
        names.push_back(name);
    Require(names == test::ListingModel(file), "the listing is the model's");
}
