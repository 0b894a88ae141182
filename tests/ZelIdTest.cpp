#include "ZelUtil/ZelId.h"

#include "Pictures.h"

#include <array>
#include <bit>
#include <compare>
#include <cstdio>

#include <gtest/gtest.h>

static_assert(sizeof(ZelId) == 16 && std::is_trivially_copyable_v<ZelId> &&
              !std::is_default_constructible_v<ZelId>);

using Number = std::array<std::uint64_t, 2>; // an identifier as it is in memory: the lower half first
using BytesOfId = const unsigned char (&)[16];
constexpr std::uint64_t kMax = UINT64_MAX;

static ZelId Restored(const Number& number)
{
    return ZelId(reinterpret_cast<BytesOfId>(number));
}

TEST(ZelId, CountsOnFromWhatIsRestored)
{
    const auto fresh = [] { return std::bit_cast<Number>(ZelId::create()); };
    EXPECT_THROW(Restored({kMax, kMax}), EOutOfBounds); // which resets the counter
    EXPECT_EQ(fresh(), Number());
    const Number steps[][2] = {{{0, 0}, {1, 0}},       {{2, 0}, {3, 0}},
                               {{0xFE, 0}, {0xFF, 0}}, {{0x100, 0}, {0x101, 0}},
                               {{7, 0}, {0x102, 0}},   {{0xFFFF, 0}, {0x10000, 0}},
                               {{kMax, 0}, {0, 1}},    {{kMax - 2, kMax}, {kMax - 1, kMax}}};
    for (const auto& [given, next] : steps)
    {
        EXPECT_EQ(std::bit_cast<Number>(Restored(given)), given);
        EXPECT_EQ(fresh(), next);
    }
    try
    {
        ZelId::create();
        ADD_FAILURE();
    }
    catch (const EOutOfBounds& error)
    {
        EXPECT_EQ(error.getMethode() + error.getFile(), "ZelId::incrementInternalCounter.\\src\\ZelUtil");
        EXPECT_EQ(error.getMsg(), "Maximum index for graphic IDs reached");
    }
    EXPECT_EQ(fresh(), Number());
}

TEST(ZelId, ComparesNumbers)
{
    const Number ascending[] = {{0, 0}, {1, 0}, {0x80, 0},         {0x100, 0}, {kMax, 0},
                                {0, 1}, {1, 1}, {0, kMax / 2 + 1}, {5, kMax}};
    for (const Number& number : ascending)
        for (const Number& another : ascending)
        {
            const ZelId id = Restored(number);
            const auto order = &number <=> &another;
            const auto agrees = [&](const auto& other)
            {
                return (id == other) == (order == 0) && (id != other) == (order != 0) &&
                       (id < other) == (order < 0) && (id <= other) == (order <= 0) &&
                       (id > other) == (order > 0) && (id >= other) == (order >= 0);
            };
            unsigned char bytes[16];
            Restored(another).get(bytes);
            EXPECT_TRUE(agrees(bytes) && agrees(Restored(another)));
        }
}

TEST(HexText, BothOrdersThereAndBack)
{
    std::string text(5, '?');
    BinToString("\x01\xAB", 2, text.data());
    EXPECT_EQ(text, std::string("01ab\0", 5));
    RBinToString("\x01\xAB", 2, text.data());
    EXPECT_EQ(text, std::string("ab01\0", 5));
    for (const unsigned short length : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{65535}})
    {
        const test::Bytes from = test::RandomBytes(length);
        test::Bytes to(length), reversed(length);
        const std::unique_ptr<char[]> exact(new char[2U * length + 1]);
        BinToString(from.data(), length, exact.get());
        EXPECT_TRUE(StringToBin(exact.get(), to.data(), length) && to == from);
        RBinToString(from.data(), length, exact.get());
        EXPECT_TRUE(RStringToBin(exact.get(), to.data(), length) && to == from);
    }
}

TEST(HexText, EveryPairReadsAsANumber)
{
    for (int i = 0; i < 65536; ++i)
    {
        const char text[] = {static_cast<char>(i >> 8), static_cast<char>(i), '5', 'a', '\0'};
        const std::string pair(text, 2);
        unsigned value = 0;
        const bool isNumber =
            pair == "0x" || pair == "0X" || (pair[1] != '\0' && std::sscanf(pair.c_str(), "%x", &value) == 1);
        const std::array<int, 3> expected =
            isNumber ? std::array{int(static_cast<unsigned char>(value)), 0x5A, 9} : std::array{9, 9, 9};
        unsigned char bytes[] = {9, 9, 9}, reversed[] = {9, 9, 9};
        ASSERT_TRUE(StringToBin(text, bytes, 2) == isNumber && RStringToBin(text, reversed, 2) == isNumber)
            << i;
        ASSERT_TRUE(bytes[0] == expected[0] && bytes[1] == expected[1] && bytes[2] == 9) << i;
        ASSERT_TRUE(reversed[0] == expected[1] && reversed[1] == expected[0] && reversed[2] == 9) << i;
    }
}
