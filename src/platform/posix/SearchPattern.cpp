#include "platform/posix/SearchPattern.h"

namespace zel
{

namespace
{

// Upper case, as Windows compares.
char Folded(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

bool IsWildcard(char character)
{
    return character == '*' || character == '?';
}

} // namespace

SearchPattern::SearchPattern(std::string_view pattern)
{
    const std::size_t last = pattern.find_last_not_of(". ");
    const std::string_view text = pattern.substr(0, last == pattern.npos ? 0 : last + 1);
    const bool dotDropped = text.size() < pattern.size() && pattern[text.size()] == '.';
    if (text == "*.*")
    {
        m_elements.push_back({Kind::Any, '*'});
        return;
    }

    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool atEnd = i + 1 == text.size();
        const char next = atEnd ? (dotDropped ? '.' : '\0') : text[i + 1];
        Kind kind = Kind::Character;
        if (text[i] == '?')
            kind = Kind::One;
        else if (text[i] == '*')
            kind = next == '.' ? Kind::AnyToLastDot : Kind::Any;
        else if (text[i] == '.' && IsWildcard(next))
            kind = Kind::DotOrEnd;
        m_elements.push_back({kind, Folded(text[i])});
    }
}

// Adds the elements that can be next without a character of the name, of which `rest` is still to come.
void SearchPattern::Reach(std::vector<bool>& reached, std::string_view rest) const
{
    const bool atEnd = rest.empty();
    for (std::size_t i = 0; i < m_elements.size(); ++i)
    {
        if (!reached[i])
            continue;
        const Kind kind = m_elements[i].kind;
        if (kind == Kind::Any || kind == Kind::AnyToLastDot || (kind == Kind::DotOrEnd && atEnd) ||
            (kind == Kind::One && (atEnd || rest.front() == '.')))
            reached[i + 1] = true;
    }
}

bool SearchPattern::Matches(std::string_view name) const
{
    if (m_elements.empty())
        return false;

    // Which elements can be next, all at once: a pattern of many wildcards costs no more than another.
    std::vector<bool> reached(m_elements.size() + 1), next(m_elements.size() + 1);
    reached[0] = true;
    Reach(reached, name);
    for (std::size_t position = 0; position < name.size(); ++position)
    {
        const char character = name[position];
        const std::string_view rest = name.substr(position + 1);
        next.assign(next.size(), false);
        for (std::size_t i = 0; i < m_elements.size(); ++i)
        {
            if (!reached[i])
                continue;
            switch (m_elements[i].kind)
            {
            case Kind::Character:
                next[i + 1] = next[i + 1] || Folded(character) == m_elements[i].character;
                break;
            case Kind::One:
            case Kind::DotOrEnd:
                if ((character == '.') == (m_elements[i].kind == Kind::DotOrEnd))
                    next[i + 1] = true;
                break;
            case Kind::Any:
                next[i] = true;
                break;
            case Kind::AnyToLastDot:
                if (character != '.' || rest.find('.') != rest.npos)
                    next[i] = true;
                break;
            }
        }
        reached.swap(next);
        Reach(reached, rest);
    }
    return reached.back();
}

} // namespace zel
