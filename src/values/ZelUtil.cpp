#include "ZelUtil/ZelId.h"

#include <cctype>
#include <cstring>

namespace
{

constexpr const char* kSourceFile = ".\\src\\ZelUtil";
constexpr int kIdBytes = 16;

// Negative, 0 or positive if the number `a` is less than, equal to or greater than `b`.
int Compare(const unsigned char (&a)[kIdBytes], const unsigned char (&b)[kIdBytes])
{
    for (int i = kIdBytes - 1; i >= 0; --i)
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    return 0;
}

void WriteDigits(unsigned char byte, char* text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    text[0] = kDigits[byte >> 4];
    text[1] = kDigits[byte & 15];
}

// -1 if the character is not a hexadecimal digit.
int DigitValue(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

// The number that a pair of characters stands for, -15 to 255, or kNoValue if it has none.
constexpr int kNoValue = 256;

int PairValue(const char* pair)
{
    const int first = DigitValue(pair[0]);
    const int second = DigitValue(pair[1]);
    if (first >= 0)
        return second >= 0 ? 16 * first + second : first;
    if (second < 0)
        return kNoValue;
    if (pair[0] == '-')
        return -second;
    return pair[0] == '+' || std::isspace(static_cast<unsigned char>(pair[0])) != 0 ? second : kNoValue;
}

// Whether `text` begins with `length` pairs that all have a value. Reads no further than its end.
bool HasPairs(const char* text, unsigned short length)
{
    if (text == nullptr)
        return length == 0;
    for (int i = 0; i < length; ++i)
    {
        const char* pair = text + 2 * i;
        if (pair[0] == '\0' || pair[1] == '\0' || PairValue(pair) == kNoValue)
            return false;
    }
    return true;
}

} // namespace

ZelId ZelId::create()
{
    return ZelId();
}

ZelId::ZelId()
{
    std::memcpy(m_id, m_unassignedId, sizeof m_id);
    incrementInternalCounter();
}

ZelId::ZelId(const unsigned char (&bytes)[16])
{
    std::memcpy(m_id, bytes, sizeof m_id);
    if (Compare(m_id, m_unassignedId) < 0)
        return;
    std::memcpy(m_unassignedId, m_id, sizeof m_id);
    incrementInternalCounter();
}

void ZelId::get(unsigned char (&bytes)[16]) const
{
    std::memcpy(bytes, m_id, sizeof m_id);
}

bool ZelId::operator==(const ZelId& other) const
{
    return *this == other.m_id;
}

bool ZelId::operator!=(const ZelId& other) const
{
    return *this != other.m_id;
}

bool ZelId::operator<(const ZelId& other) const
{
    return *this < other.m_id;
}

bool ZelId::operator<=(const ZelId& other) const
{
    return *this <= other.m_id;
}

bool ZelId::operator>(const ZelId& other) const
{
    return *this > other.m_id;
}

bool ZelId::operator>=(const ZelId& other) const
{
    return *this >= other.m_id;
}

bool ZelId::operator==(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) == 0;
}

bool ZelId::operator!=(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) != 0;
}

bool ZelId::operator<(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) < 0;
}

bool ZelId::operator<=(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) <= 0;
}

bool ZelId::operator>(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) > 0;
}

bool ZelId::operator>=(const unsigned char (&bytes)[16]) const
{
    return Compare(m_id, bytes) >= 0;
}

void ZelId::incrementInternalCounter()
{
    for (unsigned char& byte : m_unassignedId)
    {
        byte = static_cast<unsigned char>(byte + 1);
        if (byte != 0)
            return;
    }
    throw EOutOfBounds("ZelId::incrementInternalCounter", "Maximum index for graphic IDs reached",
                       kSourceFile, __LINE__);
}

void BinToString(const void* const bytes, unsigned short length, char* const text)
{
    const auto* from = static_cast<const unsigned char*>(bytes);
    for (int i = 0; i < length; ++i)
        WriteDigits(from[i], text + 2 * i);
    text[2 * length] = '\0';
}

void RBinToString(const void* const bytes, unsigned short length, char* const text)
{
    const auto* from = static_cast<const unsigned char*>(bytes);
    for (int i = 0; i < length; ++i)
        WriteDigits(from[i], text + 2 * (length - 1 - i));
    text[2 * length] = '\0';
}

const bool StringToBin(const char* const text, void* const bytes, unsigned short length)
{
    if (!HasPairs(text, length))
        return false;

    auto* to = static_cast<unsigned char*>(bytes);
    for (int i = 0; i < length; ++i)
        to[i] = static_cast<unsigned char>(PairValue(text + 2 * i));
    return true;
}

const bool RStringToBin(const char* const text, void* const bytes, unsigned short length)
{
    if (!HasPairs(text, length))
        return false;

    auto* to = static_cast<unsigned char*>(bytes);
    for (int i = 0; i < length; ++i)
        to[length - 1 - i] = static_cast<unsigned char>(PairValue(text + 2 * i));
    return true;
}
