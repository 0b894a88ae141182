#include "ZelUtil/StdStr.h"

#include "system/Platform.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace
{

constexpr std::uintptr_t kResourceLimit = 65536;

std::string TextOrResource(const char* text)
{
    if (text == nullptr)
        return {};
    const auto value = reinterpret_cast<std::uintptr_t>(text);
    if (value < kResourceLimit)
        return zel::StringResource(static_cast<unsigned>(value));
    return text;
}

bool IsSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

int Position(std::string::size_type position)
{
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

} // namespace

CStdStr<char>::CStdStr(const std::string& text) : std::string(text) {}

CStdStr<char>::CStdStr(const char* text) : std::string(TextOrResource(text)) {}

CStdStr<char>& CStdStr<char>::operator=(const char* text)
{
    if (text == nullptr)
        clear();
    else
        assign(text);
    return *this;
}

CStdStr<char>& CStdStr<char>::operator+=(const char* text)
{
    if (text != nullptr)
        append(text);
    return *this;
}

CStdStr<char>& CStdStr<char>::operator+=(const std::string& text)
{
    append(text);
    return *this;
}

int CStdStr<char>::Compare(const char* text) const
{
    return compare(text == nullptr ? "" : text);
}

int CStdStr<char>::Compare(const std::string& text) const
{
    return compare(text);
}

int CStdStr<char>::Find(const char* text) const
{
    return text == nullptr ? -1 : Position(find(text));
}

int CStdStr<char>::Find(const std::string& text) const
{
    return Position(find(text));
}

int CStdStr<char>::ReverseFind(char character) const
{
    return Position(rfind(character));
}

CStdStr<char> CStdStr<char>::Mid(int start, int count) const
{
    const size_type from = std::min(static_cast<size_type>(std::max(start, 0)), size());
    return substr(from, static_cast<size_type>(std::max(count, 0)));
}

CStdStr<char> CStdStr<char>::Mid(int start) const
{
    return substr(std::min(static_cast<size_type>(std::max(start, 0)), size()));
}

CStdStr<char>& CStdStr<char>::TrimLeft()
{
    erase(begin(), std::find_if_not(begin(), end(), IsSpace));
    return *this;
}

CStdStr<char>& CStdStr<char>::TrimRight()
{
    erase(std::find_if_not(rbegin(), rend(), IsSpace).base(), end());
    return *this;
}
