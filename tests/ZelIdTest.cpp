#include "ZelUtil/ZelId.h"

#include "Pictures.h"

#include <array>
#include <bit>

#include <gtest/gtest.h>

static_assert(sizeof(ZelId) == 16 && std::is_trivially_copyable_v<ZelId> &&
              !std::is_default_constructible_v<ZelId>);

using Number = std::array<std::uint64_t, 2>; // an identifier as it is in memory: the lower half first
constexpr std::uint64_t kMax = UINT64_MAX;

static ZelId Restored(const Number& number)
{
    return ZelId(reinterpret_cast<const unsigned char(&)[16]>(number));
}

TEST(ZelId, CountsOnFromWhatIsRestored)
{
    const auto fresh = [] { return std::bit_cast<Number>(ZelId::create()); };
    for (const Number& last : {Number{kMax, kMax}, Number{kMax - 1, kMax}})
    {
        EXPECT_THROW((Restored(last), ZelId::create()), EOutOfBounds);
        EXPECT_EQ(fresh(), Number()); // the counter is reset
    }
    const Number steps[][2] = {
        {{1, 0}, {2, 0}}, {{0xFFFF, 0}, {0x10000, 0}}, {{7, 0}, {0x10001, 0}}, {{kMax, 0}, {0, 1}}};
    for (const auto& [given, next] : steps)
    {
        EXPECT_EQ(std::bit_cast<Number>(Restored(given)), given);
        EXPECT_EQ(fresh(), next);
    }
}

TEST(ZelId, ComparesNumbers)
{
    const Number ascending[] = {{0, 0}, {1, 0}, {0x80, 0}, {0x100, 0}, {kMax, 0}, {0, 1}, {5, kMax}};
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
    EXPECT_TRUE(StringToBin(nullptr, nullptr, 0) && !RStringToBin(nullptr, text.data(), 1));
    const test::Bytes from = test::RandomBytes(65535);
    test::Bytes to(65535);
    const std::unique_ptr<char[]> exact(new char[2 * 65535 + 1]);
    BinToString(from.data(), 65535, exact.get());
    EXPECT_TRUE(StringToBin(exact.get(), to.data(), 65535) && to == from);
    RBinToString(from.data(), 65535, exact.get());
    EXPECT_TRUE(RStringToBin(exact.get(), to.data(), 65535) && to == from);
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
        std::array<unsigned char, 3> bytes = {9, 9, 9}, reversed = bytes, expected = bytes;
        if (isNumber)
            expected = {static_cast<unsigned char>(value), 0x5A, 9};
        ASSERT_TRUE(StringToBin(text, bytes.data(), 2) == isNumber && bytes == expected) << i;
        std::swap(expected[0], expected[1]);
        ASSERT_TRUE(RStringToBin(text, reversed.data(), 2) == isNumber && reversed == expected) << i;
    }
}
