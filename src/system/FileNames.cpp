#include "system/FileNames.h"

#include <cctype>
#include <vector>

namespace zel
{

namespace
{

bool EqualIgnoringCase(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// Windows compares names in upper case.
char ToUpper(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
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
    // Backtracking: the last "*" met so far, and the end of the text that it has taken. On a mismatch the
    // last "*" takes one more character. Earlier stars need no retry: giving them more only moves the last
    // star's start to the right, which its own growth covers.
    std::size_t star = pattern.npos, taken = 0;
    std::size_t p = 0, t = 0;
    while (t < text.size())
    {
        if (p < pattern.size() && pattern[p] == '*')
        {
            star = p++;
            taken = ++t;
        }
        else if (p < pattern.size() && (pattern[p] == '?' || EqualIgnoringCase(pattern[p], text[t])))
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

std::string SearchExpression(std::string_view pattern)
{
    std::string expression(pattern.substr(0, pattern.find_last_not_of(". ") + 1));
    if (expression == "*.*")
        return "*";

    for (std::size_t i = 0; i < expression.size(); ++i)
    {
        const bool atEnd = i + 1 == expression.size();
        const char next = atEnd ? '\0' : expression[i + 1];
        if (expression[i] == '?')
            expression[i] = '>';
        else if (expression[i] == '*' && (next == '.' || (atEnd && pattern.ends_with('.'))))
            expression[i] = '<';
        else if (expression[i] == '.' && (next == '*' || next == '?'))
            expression[i] = '"';
    }
    return expression;
}

bool MatchesSearch(std::string_view expression, std::string_view name)
{
    if (expression.empty())
        return false;

    // Dynamic programming, from the back of the expression. with[j]: elements from i on match name[j..];
    // without[j]: elements from i + 1 on match it.
    const std::size_t end = name.size();
    std::vector<char> with(end + 1), without(end + 1);
    without[end] = 1;
    for (std::size_t i = expression.size(); i-- > 0; with.swap(without))
        for (std::size_t j = end + 1; j-- > 0;)
        {
            const bool atEnd = j == end;
            const bool isDot = !atEnd && name[j] == '.';
            const bool takesOne = !atEnd && without[j + 1] != 0;
            const bool takesMore = !atEnd && with[j + 1] != 0;
            bool describes = false;
            switch (expression[i])
            {
            case '*':
                describes = without[j] != 0 || takesMore;
                break;
            case '<':
                describes = without[j] != 0 || (takesMore && (!isDot || name.find('.', j + 1) != name.npos));
                break;
            case '>':
                describes = atEnd || isDot ? without[j] != 0 : takesOne;
                break;
            case '"':
                describes = atEnd ? without[j] != 0 : isDot && takesOne;
                break;
            default:
                describes = takesOne && ToUpper(name[j]) == ToUpper(expression[i]);
            }
            with[j] = describes ? 1 : 0;
        }
    return without[0] != 0;
}

} // namespace zel
