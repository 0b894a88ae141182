#include "Pictures.h"

#include <array>
#include <climits>
#include <gtest/gtest.h>

using namespace test;

namespace
{

std::uint32_t ClrUsed(const CTarvexDib& dib)
{
    return Number(Packed(dib), 32);
}

// Width, height, depth, bytes per row, padding, bytes per pixel, length of the packed form.
using Metrics = std::array<int, 7>;

Metrics MetricsOf(const CTarvexDib& dib)
{
    return {dib.Width(),   dib.Height(),    dib.BitCount(),    dib.BytesPerScanLine(),
            dib.Padding(), dib.PixelSize(), dib.GetDibLength()};
}

void ExpectEmpty(const CTarvexDib& dib)
{
    EXPECT_EQ(MetricsOf(dib), (Metrics{0, 0, 0, 0, 0, dib.PixelSize(), 40}));
    EXPECT_TRUE(dib.GetScanLine(0) == nullptr && dib.GetColorTable() == nullptr);
}

} // namespace

TEST(TarvexDib, RowsArePaddedToFourBytes)
{
    const Metrics cases[] = {{3, 2, 24, 12, 3, 3, 64},
                             {4, 2, 24, 12, 0, 3, 64},
                             {5, 1, 8, 8, 3, 1, 1072},
                             {1, 1, 32, 4, 0, 4, 44},
                             {0, 7, 24, 0, 0, 3, 40},
                             {9, 0, 32, 36, 0, 4, 40},
                             {0, INT_MAX, 8, 0, 0, 1, 1064},
                             {536870911, 1, 8, 536870912, 1, 1, 536871976}, // an int cannot count its bits
                             {9, 2, 1, 4, 4, 0, 56},
                             {9, 2, 4, 8, 8, 0, 120},
                             {9, 2, 16, 20, 2, 2, 80}};
    for (const Metrics& metrics : cases)
    {
        const auto [width, height, bits, rowBytes, padding, pixelSize, length] = metrics;
        const int table = bits < 8 ? 1 << bits : 0;
        CTarvexDib dib;
        if (bits < 8 || bits == 16) // only the loaders make these depths
            dib = FromPacked(BlankPacked(width, height, bits, table, table));
        else
            ASSERT_TRUE(dib.Create(width, height, bits));
        EXPECT_EQ(MetricsOf(dib), metrics);
    }
}

TEST(TarvexDib, CreateRefusesWhatExceedsTheLimits)
{
    constexpr int kSizes[] = {INT_MIN, -1, 0, 1, 3, 256, 46341, 536870911, INT_MAX - 1, INT_MAX};
    for (const int bits : {8, 24, 32, INT_MIN, -24, -1, 0, 1, 4, 16, 31, 33, 64, 256, INT_MAX})
        for (const std::int64_t width : kSizes)
            for (const std::int64_t height : kSizes)
            {
                const std::int64_t header = bits == 8 ? 1064 : 40, row = (width * bits + 31) / 32 * 4;
                const bool fits = (bits == 8 || bits == 24 || bits == 32) && width >= 0 && height >= 0 &&
                                  row <= INT_MAX && row * height + header <= INT_MAX;
                SCOPED_TRACE(testing::Message() << width << " x " << height << " of " << bits << " bits");
                CTarvexDib dib = RandomPicture(2, 2, 24);
                EXPECT_EQ(dib.Create(static_cast<int>(width), static_cast<int>(height), bits), fits);
                EXPECT_EQ(dib.GetDibLength(), fits ? header + row * height : 40);
                if (!fits)
                    ExpectEmpty(dib);
            }
}

TEST(TarvexDib, CreateWritesWhatItPromises)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(5, 3, 32));
    EXPECT_EQ(PixelBytes(dib), Bytes(60, 255));
    ASSERT_TRUE(dib.Create(2, 3, 24));
    for (const int row : {0, 1, 2})
        EXPECT_TRUE(dib.GetScanLine(row)[6] == 0 && dib.GetScanLine(row)[7] == 0) << row;
    EXPECT_EQ(dib.GetPixelFast(1, 0), dib.GetScanLine(0) + 19); // the top row is stored last

    ASSERT_TRUE(dib.Create(0, 0, 8));
    EXPECT_EQ(Packed(dib), BlankPacked(0, 0, 8, 256, 256));
}

TEST(TarvexDib, ColorTableFollowsItsCount)
{
    const tagRGBQUAD colors[257] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    CTarvexDib dib;
    EXPECT_FALSE(dib.SetColorTable(colors, 0));
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const int count : {INT_MIN, -1, 0, 1, 2, 3, 16, 17, 256, 257, INT_MAX})
        {
            dib = RandomPicture(3, 1, bits);
            const Bytes before = Packed(dib);
            const bool fits = bits <= 8 && count >= 0 && count <= 1 << bits;
            EXPECT_EQ(dib.SetColorTable(colors, count), fits) << bits << " bits, " << count;
            EXPECT_EQ(Packed(dib) != before, fits);
        }

    ASSERT_TRUE(dib.Create(3, 1, 8));
    EXPECT_FALSE(dib.SetColorTable(nullptr, 1));
    ASSERT_TRUE(dib.SetColorTable(colors, 2));
    EXPECT_EQ(dib.GetDibLength(), 52);
    EXPECT_EQ(ClrUsed(dib), 2U);
    EXPECT_EQ(dib.GetColorTable()[1].rgbRed, 7);
    ASSERT_TRUE(dib.SetColorTable(dib.GetColorTable() + 1, 3)); // its own, and beyond its end
    EXPECT_EQ(dib.GetColorTable()[0].rgbBlue, 5);
    EXPECT_EQ(dib.GetColorTable()[2].rgbBlue, 0);
    ASSERT_TRUE(dib.SetColorTable(nullptr, 0));
    EXPECT_EQ(dib.GetDibLength(), 44);
    EXPECT_EQ(ClrUsed(dib), 3U);
}

TEST(TarvexDib, CopyColorsGrowsTheBlockWhereNeeded)
{
    CTarvexDib source, target = RandomPicture(4, 1, 24), empty;
    ASSERT_TRUE(source.Create(1, 1, 8));
    for (int i = 0; i < 256; ++i)
        source.GetColorTable()[i].rgbGreen = static_cast<unsigned char>(i);
    target.CopyColorsFromDib(source);
    EXPECT_EQ(target.GetDibLength(), 40 + 1024 + 12);
    EXPECT_EQ(target.GetColorTable()[255].rgbGreen, 255);
    EXPECT_EQ(ClrUsed(target), 256U);

    ASSERT_TRUE(source.SetColorTable(source.GetColorTable() + 100, 7)); // now there is room enough
    target.CopyColorsFromDib(source);
    EXPECT_EQ(target.GetDibLength(), 40 + 28 + 12);
    EXPECT_EQ(ClrUsed(target), 7U);
    EXPECT_EQ(target.GetColorTable()[6].rgbGreen, 106);
    target.CopyColorsFromDib(target);
    EXPECT_EQ(ClrUsed(target), 7U);
    target.CopyColorsFromDib(empty);
    EXPECT_EQ(target.GetDibLength(), 40 + 12);
    EXPECT_EQ(ClrUsed(target), 7U);
    empty.CopyColorsFromDib(source);
    ExpectEmpty(empty);
}

TEST(TarvexDib, CopiesAreDeep)
{
    CTarvexDib source = RandomPicture(5, 4, 32);
    source.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    const Bytes expected = Packed(source);
    const CTarvexDib copy(source);
    CTarvexDib assigned = RandomPicture(2, 2, 8);
    assigned = source;
    const CTarvexDib& same = assigned;
    assigned = same;
    source.AlphaAlpha(7);
    source.Empty();
    for (const CTarvexDib* const dib : {&copy, &same})
    {
        EXPECT_EQ(Packed(*dib), expected);
        EXPECT_EQ(dib->GetInterpolMethod(), CTarvexDib::InterpolCubic);
        EXPECT_EQ(dib->PixelSize(), 4);
    }
    EXPECT_EQ(CTarvexDib().GetInterpolMethod(), CTarvexDib::InterpolNearest);
    EXPECT_EQ(CTarvexDib().PixelSize(), 0);
    EXPECT_EQ(CTarvexDib(source).GetInterpolMethod(), CTarvexDib::InterpolCubic);
}

// A picture without pixels is a picture still, but assignment takes it for an empty image.
TEST(TarvexDib, WhatIsEmptiedKeepsItsMethod)
{
    CTarvexDib wide, high;
    ASSERT_TRUE(wide.Create(3, 0, 24) && high.Create(0, 3, 24));
    for (const CTarvexDib& source : {CTarvexDib(), wide, high})
    {
        EXPECT_EQ(Packed(CTarvexDib(source)), Packed(source));
        CTarvexDib target = RandomPicture(2, 2, 24);
        target.SetupInterpolMethod(CTarvexDib::InterpolCubic);
        target = source;
        ExpectEmpty(target);
        EXPECT_EQ(target.PixelSize(), 3);
        EXPECT_EQ(target.GetInterpolMethod(), CTarvexDib::InterpolCubic);
        EXPECT_TRUE(target.Create(3, 3, 32) && LoadPacked(target, Packed(target)));
        EXPECT_EQ(target.GetInterpolMethod(), CTarvexDib::InterpolCubic);
    }
}
