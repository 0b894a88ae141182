#include "Pictures.h"
#include "Targets.h"

#include <climits>
#include <gtest/gtest.h>

using namespace test;

namespace
{

// Rows from the top down, one digit a pixel: each byte of it has the digit's value.
CTarvexDib Digits(const std::vector<std::string>& rows, int bits)
{
    CTarvexDib dib;
    dib.Create(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), bits);
    for (int y = 0; y < dib.Height(); ++y)
        for (int x = 0; x < dib.Width(); ++x)
            std::fill_n(dib.GetPixelFast(x, y), dib.PixelSize(),
                        static_cast<unsigned char>(
                            rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] - '0'));
    return dib;
}

} // namespace

TEST(ChangeToTrueColor, ValuesByHand)
{
    const struct
    {
        int bits, width, colors;
        Bytes row, expected; // the colours are i, 10 + i, 20 + i
    } cases[] = {
        {1, 5, 2, {0x90, 0, 0, 0}, {1, 11, 21, 0, 10, 20, 0, 10, 20, 1, 11, 21, 0, 10, 20, 0}},
        {1, 2, 1, {0x40, 0, 0, 0}, {0, 10, 20, 0, 0, 0, 0, 0}},
        {4, 3, 15, {0x1E, 0xF5, 0, 0}, {1, 11, 21, 14, 24, 34, 0, 0, 0, 0, 0, 0}},
        {8, 3, 200, {7, 199, 200, 0}, {7, 17, 27, 199, 209, 219, 0, 0, 0, 0, 0, 0}},
        {16, 3, 0, {0xFF, 0x7F, 1, 0x80, 0x10, 0x22, 0, 0}, {255, 255, 255, 8, 0, 0, 132, 132, 66, 0, 0, 0}},
        {24, 2, 0, {1, 2, 3, 4, 5, 6, 0, 0}, {1, 2, 3, 4, 5, 6, 0, 0}}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.bits);
        Bytes packed = BlankPacked(c.width, 1, c.bits, c.colors, c.colors);
        for (int i = 0; i < c.colors; ++i)
            PutNumber(packed, static_cast<std::size_t>(40 + 4 * i),
                      static_cast<std::uint32_t>(0x63140A00 + 0x10101 * i));
        WriteBytes(packed.data() + packed.size() - c.row.size(), c.row);
        CTarvexDib dib = FromPacked(packed);
        ASSERT_TRUE(dib.ChangeToTrueColor(false));
        EXPECT_EQ(PixelBytes(dib), c.expected);
        EXPECT_EQ(dib.GetDibLength(), static_cast<int>(40 + c.expected.size()));
        EXPECT_EQ(Number(Packed(dib), 32), 0U);
        dib = FromPacked(packed);
        ASSERT_TRUE(dib.ChangeToTrueColor(true));
        EXPECT_EQ(Bytes(dib.GetPixelFast(1, 0), dib.GetPixelFast(2, 0)),
                  (Bytes{c.expected[3], c.expected[4], c.expected[5], 255}));
        EXPECT_TRUE(dib.ChangeToTrueColor(false) && dib.BitCount() == 32); // it has more already
    }

    CTarvexDib dib; // would have 4 * 2^29 bytes
    EXPECT_TRUE(dib.Create(536870912, 1, 8) && !dib.ChangeToTrueColor(true));
    EXPECT_EQ(dib.BitCount(), 8);
}

TEST(Clone, ValuesByHand)
{
    const CTarvexDib source = Digits({"1234", "5678"}, 32);
    const struct
    {
        int left, top, right, bottom;
        std::vector<std::string> expected;
    } cases[] = {{0, 0, 4, 2, {"1234", "5678"}},
                 {0, 0, 4, 2, {"11223344"}},
                 {1, 1, 4, 2, {"666777888"}},
                 {0, 0, 4, 2, {"13"}},
                 {2, 0, 2, 0, {"33", "33"}},
                 {3, 1, 4, 2, {"8", "8", "8"}},
                 {0, 0, 3, 2, {"12", "12", "56", "56"}}};
    for (const auto& c : cases)
        for (const int bits : {24, 32})
        {
            CTarvexDib expected = Digits(c.expected, bits);
            const CTarvexDib result(expected);
            std::fill_n(result.GetPixelFast(0, 0), 3, static_cast<unsigned char>(9));
            EXPECT_TRUE(result.Clone(source, c.left, c.top, c.right, c.bottom));
            EXPECT_EQ(PixelBytes(result), PixelBytes(expected)) << c.expected[0];
        }
    const CTarvexDib opaque = Digits({"7"}, 32);
    EXPECT_TRUE(opaque.Clone(Digits({"3"}, 24), 0, 0, 1, 1));
    EXPECT_EQ(PixelBytes(opaque), (Bytes{3, 3, 3, 255}));
}

TEST(Clone, RoundsPositionsAsDocumented)
{
    const CTarvexDib source = Digits({"1234"}, 24), dib = RandomPicture(98, 1, 24);
    ASSERT_TRUE(dib.Clone(source, 1, 0, 3, 1)); // 49 * (2.0 / 98) is a hair below 1
    EXPECT_EQ(*dib.GetPixelFast(49, 0), 49 * (2.0 / 98) < 1 ? 2 : 3);
    EXPECT_EQ(*dib.GetPixelFast(50, 0), 3);

    // 200,000 rounded additions of 1 / 200,000 to 2^20 could pass the last row.
    const CTarvexDib high = RandomPicture(1, 1048577, 24), copy = RandomPicture(1, 200000, 24);
    ASSERT_TRUE(copy.Clone(high, 0, 1048576, 1, 1048577));
    for (const int row : {0, 100000, 199999})
        EXPECT_TRUE(std::equal(copy.GetScanLine(row), copy.GetScanLine(row) + 3, high.GetScanLine(0)));
}

TEST(CopyRect, ValuesByHand)
{
    const CTarvexDib source = Digits({"1234", "5678"}, 24);
    Bytes raw;
    for (const unsigned char digit : Bytes{5, 6, 7, 8, 1, 2, 3, 4}) // from the bottom row up
        raw.insert(raw.end(), 3, digit);
    const struct
    {
        int destX, destY, srcX, srcY, columns, srcRowEnd;
        std::vector<std::string> expected; // of 3 x 3 zeros
    } cases[] = {{0, 0, 0, 0, 4, 2, {"123", "567", "000"}},
                 {1, 1, 1, 0, 2, 1, {"000", "023", "000"}},
                 {2, 2, 3, 1, INT_MAX, INT_MAX, {"000", "000", "008"}},
                 {0, 2, 0, 0, 2, 2, {"000", "000", "120"}},
                 {0, 0, 3, 0, 9, 9, {"400", "800", "000"}},
                 {0, 0, 0, 1, 4, 1, {"000", "000", "000"}}, // the row after the last is the first
                 {0, 0, 0, 0, INT_MIN, 2, {"000", "000", "000"}}};
    for (const auto& c : cases)
    {
        const CTarvexDib fromImage = Digits({"000", "000", "000"}, 24), fromRaw(fromImage);
        EXPECT_TRUE(
            fromImage.CopyRect(c.destX, c.destY, source, c.srcX, c.srcY, c.columns, c.srcRowEnd) &&
            fromRaw.CopyRect(c.destX, c.destY, raw.data(), 4, 2, 24, c.srcX, c.srcY, c.columns, c.srcRowEnd));
        EXPECT_EQ(PixelBytes(fromImage), PixelBytes(Digits(c.expected, 24)));
        EXPECT_EQ(PixelBytes(fromRaw), PixelBytes(Digits(c.expected, 24)));
    }
}

TEST(CopyRect, RefusesRawPixelsThatAreNotThere)
{
    const CTarvexDib dib = Digits({"1234", "5678"}, 32);
    const Bytes before = PixelBytes(dib);
    Bytes raw(32);
    const struct
    {
        int width, height, bits, srcX, srcY;
    } cases[] = {{4, 2, 24, 0, 0},      {INT_MIN, 2, 32, 0, 0}, {4, INT_MIN, 32, 0, 0},
                 {0, 2, 32, 0, 0},      {4, 0, 32, 0, 0},       {4, 2, 0, 0, 0},
                 {4, 2, INT_MAX, 0, 0}, {4, 2, 32, 4, 0},       {4, 2, 32, INT_MAX, 0},
                 {4, 2, 32, -1, 0},     {4, 2, 32, 0, 2},       {4, 2, 32, 0, INT_MIN}};
    for (const auto& c : cases)
        EXPECT_FALSE(dib.CopyRect(0, 0, raw.data(), c.width, c.height, c.bits, c.srcX, c.srcY, 4, 2));
    EXPECT_FALSE(dib.CopyRect(0, 0, nullptr, 4, 2, 32, 0, 0, 4, 2));
    EXPECT_TRUE(dib.CopyRect(0, 0, nullptr, INT_MAX, INT_MAX, 32, 0, 0, 0, 2)); // no columns
    EXPECT_TRUE(dib.CopyRect(0, 0, nullptr, 4, 2, 32, 0, 1, 4, 1));             // no rows
    EXPECT_EQ(PixelBytes(dib), before);
}

TEST(CopyRect, CopiesOwnPixelsThatOverlap)
{
    const CTarvexDib row = Digits({"1234"}, 32), column = Digits({"1", "2", "3"}, 32);
    EXPECT_TRUE(row.CopyRect(1, 0, row.GetScanLine(0), 4, 1, 32, 0, 0, 3, 1));
    EXPECT_EQ(PixelBytes(row), PixelBytes(Digits({"1123"}, 32)));
    EXPECT_TRUE(column.CopyRect(0, 1, column.GetScanLine(0), 1, 3, 32, 0, 0, 1, 2)); // from the top down
    EXPECT_EQ(PixelBytes(column), PixelBytes(Digits({"1", "1", "1"}, 32)));
}
