#include "config/IniScan.h"

#include "config/IniText.h"

namespace zel
{

namespace
{

// The start of the first line from p on that contains a "[", or p itself where p is within that line; the end
// of the text if there is none. Only these lines can be section headers, and a search for one character is
// quicker than a walk over all lines.
const char* LineWithBracket(const char* p)
{
    const char* bracket = std::strchr(p, '[');
    if (bracket == nullptr)
        return p + std::strlen(p);
    while (bracket > p && bracket[-1] != '\n')
        --bracket;
    return bracket;
}

// The same from the line after p on. The end of p's own line is searched for only if the next "[" is in it.
const char* NextLineWithBracket(const char* p)
{
    const char* const line = LineWithBracket(p);
    return line > p ? line : LineWithBracket(SkipLine(p));
}

// Where a key is tried next after the comparison failed at p: after p if it is a blank, else on the next
// line.
const char* NextCandidate(const char* p)
{
    return IsBlank(*p) ? p + 1 : SkipLine(p);
}

} // namespace

const char* ScanForValue(const char* text, const char* section, const char* key)
{
    const UpperCase upper;
    const SearchTerm sectionTerm = SearchTerm::ForSection(section, upper);
    const SearchTerm keyTerm = SearchTerm::ForKey(key, upper);
    if (sectionTerm.IsEmpty() || keyTerm.IsEmpty())
        return nullptr;

    const char* p = LineWithBracket(text);
    while (*p != '[' || !sectionTerm.Matches(p, upper))
    {
        if (*p == '\0')
            return nullptr;
        p = IsBlank(*p) ? p + 1 : NextLineWithBracket(p);
    }
    for (p = SkipLine(p); *p != '\0' && *p != '['; p = NextCandidate(p))
        if (*p != ';' && *p != '\r' && keyTerm.Matches(p, upper))
            return p;
    return nullptr;
}

} // namespace zel
