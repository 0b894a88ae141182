#include "ZelUtil/ZelId.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

static_assert(sizeof(ZelId) == 16 && std::is_trivially_copyable_v<ZelId> &&
              !std::is_default_constructible_v<ZelId>);

namespace
{

struct Id
{
    unsigned char bytes[16] = {};
};

// Bytes as a hexadecimal number, highest digit first, as the text forms have it.
Id FromNumber(const std::string& digits)
{
    Id id;
    EXPECT_TRUE(RStringToBin((std::string(32 - digits.size(), '0') + digits).c_str(), id.bytes, 16));
    return id;
}

std::string Number(const ZelId& id)
{
    unsigned char bytes[16];
    char text[33];
    id.get(bytes);
    RBinToString(bytes, 16, text);
    const std::string digits = text;
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

// The counter is one for the process, so each test brings it where it starts.
void StartFromZero()
{
    EXPECT_THROW(ZelId(FromNumber(std::string(32, 'f')).bytes), EOutOfBounds);
}

} // namespace

TEST(ZelId, CountsUpWithCarries)
{
    StartFromZero();
    for (const char* const number : {"0", "1", "2"})
        EXPECT_EQ(Number(ZelId::create()), number);
    const char* const steps[][2] = {{"fe", "ff"},
                                    {"ff", "100"},
                                    {"ffff", "10000"},
                                    {"ffffffffffffffff", "10000000000000000"},
                                    {"fffffffffffffffffffffffffffffffd", "fffffffffffffffffffffffffffffffe"}};
    for (const auto& [given, next] : steps)
    {
        EXPECT_EQ(Number(ZelId(FromNumber(given).bytes)), given);
        EXPECT_EQ(Number(ZelId::create()), next);
    }
}

TEST(ZelId, BroughtBackOnesAreNotHandedOutAgain)
{
    StartFromZero();
    const ZelId high(FromNumber("1234").bytes);
    const ZelId low(FromNumber("7").bytes); // below the counter, which stays
    EXPECT_EQ(Number(ZelId::create()), "1235");
    const ZelId equal(FromNumber("1236").bytes); // the counter itself
    EXPECT_EQ(Number(ZelId::create()), "1237");
    EXPECT_FALSE(low == FromNumber("ffff").bytes || high < low || equal < high); // comparisons do not count
    EXPECT_EQ(Number(ZelId::create()), "1238");
}

TEST(ZelId, ExhaustionWrapsAndThrows)
{
    StartFromZero();
    const ZelId last(FromNumber("fffffffffffffffffffffffffffffffe").bytes);
    for (int round = 0; round < 2; ++round)
    {
        try
        {
            if (round == 0)
                ZelId::create();
            else
                ZelId(FromNumber(std::string(32, 'f')).bytes);
            ADD_FAILURE();
        }
        catch (const EOutOfBounds& error)
        {
            EXPECT_EQ(error.getMethode(), "ZelId::incrementInternalCounter");
            EXPECT_EQ(error.getMsg(), "Maximum index for graphic IDs reached");
            EXPECT_EQ(error.getFile(), ".\\src\\ZelUtil");
            EXPECT_GT(error.getLine(), 0UL);
        }
        EXPECT_EQ(Number(ZelId::create()), "0");
    }
}

TEST(ZelId, ComparesFromTheHighestByteDown)
{
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round)
    {
        Id a, b;
        for (int i = 0; i < 16; ++i)
            a.bytes[i] = b.bytes[i] = static_cast<unsigned char>(random());
        if (round % 4 != 0)
            b.bytes[random() % 16] = static_cast<unsigned char>(random());
        if (round % 4 == 2)
            b.bytes[15] = static_cast<unsigned char>(b.bytes[15] ^ 0x80);
        const ZelId first(a.bytes), second(b.bytes);
        const int order = std::lexicographical_compare(std::rbegin(a.bytes), std::rend(a.bytes),
                                                       std::rbegin(b.bytes), std::rend(b.bytes))
                              ? -1
                          : std::equal(a.bytes, a.bytes + 16, b.bytes) ? 0
                                                                       : 1;
        EXPECT_EQ(first == second, order == 0);
        EXPECT_EQ(first != second, order != 0);
        EXPECT_EQ(first < second, order < 0);
        EXPECT_EQ(first <= second, order <= 0);
        EXPECT_EQ(first > second, order > 0);
        EXPECT_EQ(first >= second, order >= 0);
        EXPECT_EQ(first == b.bytes, order == 0);
        EXPECT_EQ(first != b.bytes, order != 0);
        EXPECT_EQ(first < b.bytes, order < 0);
        EXPECT_EQ(first <= b.bytes, order <= 0);
        EXPECT_EQ(first > b.bytes, order > 0);
        EXPECT_EQ(first >= b.bytes, order >= 0);
    }
}

TEST(HexText, BothOrdersThereAndBack)
{
    const unsigned char bytes[] = {0x01, 0xAB};
    char text[6] = "?????";
    BinToString(bytes, 2, text);
    EXPECT_STREQ(text, "01ab");
    RBinToString(bytes, 2, text);
    EXPECT_STREQ(text, "ab01");
    for (const auto convert : {BinToString, RBinToString})
    {
        text[0] = '?';
        convert(bytes, 0, text);
        EXPECT_EQ(std::string(text, 2), std::string("\0b", 2));
    }

    std::mt19937 random(4);
    for (const int length : {1, 2, 16, 255, 65535})
    {
        std::vector<unsigned char> from(static_cast<std::size_t>(length)), to(from.size()),
            reversed(from.size());
        std::generate(from.begin(), from.end(), [&] { return static_cast<unsigned char>(random()); });
        const std::unique_ptr<char[]> exact(new char[2 * from.size() + 1]); // no byte to spare
        BinToString(from.data(), static_cast<unsigned short>(length), exact.get());
        EXPECT_EQ(std::strlen(exact.get()), 2 * from.size());
        EXPECT_TRUE(StringToBin(exact.get(), to.data(), static_cast<unsigned short>(length)));
        EXPECT_TRUE(RStringToBin(exact.get(), reversed.data(), static_cast<unsigned short>(length)));
        EXPECT_EQ(to, from);
        std::reverse(reversed.begin(), reversed.end());
        EXPECT_EQ(reversed, from);
        RBinToString(from.data(), static_cast<unsigned short>(length), exact.get());
        EXPECT_TRUE(RStringToBin(exact.get(), to.data(), static_cast<unsigned short>(length)));
        EXPECT_EQ(to, from);
    }
}

TEST(HexText, EveryPairReadsAsANumberOfItsOwn)
{
    for (int first = 1; first < 256; ++first)
        for (int second = 1; second < 256; ++second)
        {
            const char pair[] = {static_cast<char>(first), static_cast<char>(second), '\0'};
            unsigned value = 0;
            const bool prefix = first == '0' && (second == 'x' || second == 'X'); // no number's prefix here
            const bool isNumber = prefix || std::sscanf(pair, "%x", &value) == 1;
            unsigned char bytes[2] = {0x5A, 0x5A};
            EXPECT_EQ(StringToBin(pair, bytes, 1), isNumber) << first << ", " << second;
            EXPECT_EQ(bytes[0], isNumber ? static_cast<unsigned char>(value) : 0x5A)
                << first << ", " << second;
            EXPECT_EQ(bytes[1], 0x5A);
        }
}

TEST(HexText, ShortAndWrongTextsWriteNothing)
{
    const struct
    {
        const char* text;
        unsigned short length;
        bool result;
    } cases[] = {{"0A0b", 2, true},  {"0A0b!", 2, true},  {"0A0", 2, false},   {"", 1, false},
                 {"", 0, true},      {nullptr, 0, true},  {nullptr, 1, false}, {"00zz", 2, false},
                 {"zz00", 2, false}, {"00", 65535, false}};
    for (const auto& c : cases)
        for (const auto convert : {StringToBin, RStringToBin})
        {
            unsigned char bytes[3] = {9, 9, 9};
            EXPECT_EQ(convert(c.text, bytes, c.length), c.result) << (c.text == nullptr ? "null" : c.text);
            const bool written = c.result && c.length > 0;
            EXPECT_EQ(bytes[0] + bytes[1], written ? 21 : 18);
            EXPECT_EQ(bytes[2], 9);
        }
}
