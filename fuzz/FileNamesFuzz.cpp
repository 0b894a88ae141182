// Extensions and searches against their rules, taken recursively.

#include "Fuzz.h"

#include "ExtensionModel.h"
#include "FileNames.h"

#include <string_view>

using namespace fuzz;

namespace
{

char Upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// How a name matches a search's expression, element by element.
bool Searched(std::string_view expression, std::string_view name)
{
    if (expression.empty())
        return name.empty();
    const char element = expression[0];
    const std::string_view rest = expression.substr(1);
    const bool isDot = !name.empty() && name[0] == '.';
    if (element == '*' || element == '<')
    {
        const bool isLastDot = isDot && name.find('.', 1) == name.npos;
        const bool takes = !name.empty() && (element == '*' || !isLastDot);
        return Searched(rest, name) || (takes && Searched(expression, name.substr(1)));
    }
    if (element == '>' && (name.empty() || isDot))
        return Searched(rest, name);
    if (element == '"' && name.empty())
        return Searched(rest, name);
    const bool fits =
        element == '>' || (element == '"' ? isDot : !name.empty() && Upper(element) == Upper(name[0]));
    return !name.empty() && fits && Searched(rest, name.substr(1));
}

// The extension, found from the back.
std::string ExtensionOf(const std::string& path)
{
    const std::size_t drive = path.size() >= 2 && path[1] == ':' ? 2 : 0;
    for (std::size_t i = path.size(); i-- > drive && path[i] != '\\' && path[i] != '/';)
        if (path[i] == '.')
            return path.substr(i);
    return "";
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::string path = input.Text(), name = input.Text();
    Require(zel::Extension(path) == ExtensionOf(path), "an extension begins at the last dot");

    // The rules try again at every character.
    const std::string pattern = path.substr(0, 10), text = name.substr(0, 12);
    Require(zel::MatchesExtension(pattern, text) == test::Matches(pattern.c_str(), text.c_str()),
            "extensions match by their rule");
    const std::string expression = zel::SearchExpression(pattern);
    Require(zel::MatchesSearch(expression, text) == (!expression.empty() && Searched(expression, text)) &&
                zel::MatchesSearch(pattern, text) == (!pattern.empty() && Searched(pattern, text)),
            "names are searched by their rule");
    return 0;
}
