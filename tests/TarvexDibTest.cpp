#include "Pictures.h"

#include <array>
#include <climits>
#include <gtest/gtest.h>

using namespace test;

namespace
{

// Width, height, depth, bytes per row, padding, bytes per pixel, length of the packed form.
using Metrics = std::array<std::int64_t, 7>;

Metrics MetricsOf(const CTarvexDib& dib)
{
    return {dib.Width(),   dib.Height(),    dib.BitCount(),    dib.BytesPerScanLine(),
            dib.Padding(), dib.PixelSize(), dib.GetDibLength()};
}

// For an image with 12 bytes of pixels. `clrUsed` is biClrUsed; the last of so many colours has `lastGreen`.
void ExpectColors(const CTarvexDib& dib, int count, unsigned clrUsed, int lastGreen)
{
    EXPECT_EQ(dib.GetDibLength(), 40 + 4 * count + 12);
    EXPECT_EQ(Number(Packed(dib), 32), clrUsed);
    EXPECT_EQ(dib.GetColorTable()[clrUsed - 1].rgbGreen, lastGreen);
}

} // namespace

TEST(TarvexDib, CreateMakesWhatTheLimitsAllow)
{
    constexpr int kSizes[] = {INT_MIN, -1, 0, 1, 3, 256, 46341, 536870911, INT_MAX - 1, INT_MAX};
    for (const std::int64_t bits : {8, 24, 32, INT_MIN, -24, -1, 0, 1, 4, 16, 31, 33, 64, 256, INT_MAX})
        for (const int width : kSizes)
            for (const int height : kSizes)
            {
                const std::int64_t header = bits == 8 ? 1064 : 40, row = (width * bits + 31) / 32 * 4;
                const bool fits = (bits == 8 || bits == 24 || bits == 32) && width >= 0 && height >= 0 &&
                                  row <= INT_MAX && row * height + header <= INT_MAX;
                SCOPED_TRACE(testing::Message() << width << " x " << height << " of " << bits << " bits");
                CTarvexDib dib = RandomPicture(2, 2, 24);
                EXPECT_EQ(dib.Create(width, height, static_cast<int>(bits)), fits);
                Metrics made = {0, 0, 0, 0, 0, 3, 40};
                if (fits)
                    made = {
                        width, height, bits, row, row - width * bits / 8, bits / 8, header + row * height};
                EXPECT_EQ(MetricsOf(dib), made);
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
    ASSERT_TRUE(dib.Create(0, 0, 8));
    EXPECT_EQ(Packed(dib), BlankPacked(0, 0, 8, 256, 256));
}

TEST(TarvexDib, ColorTableFollowsItsCount)
{
    const tagRGBQUAD colors[257] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    CTarvexDib dib;
    EXPECT_FALSE(dib.SetColorTable(colors, 0));
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const int count : {INT_MIN, -1, 0, 2, 3, 16, 17, 256, 257})
        {
            dib = RandomPicture(3, 1, bits);
            const Bytes before = Packed(dib);
            const bool fits = bits <= 8 && count >= 0 && count <= 1 << bits;
            EXPECT_EQ(dib.SetColorTable(colors, count), fits) << bits << " bits, " << count;
            EXPECT_EQ(Packed(dib) != before, fits);
        }

    ASSERT_TRUE(dib.Create(12, 1, 8));
    EXPECT_FALSE(dib.SetColorTable(nullptr, 1));
    ASSERT_TRUE(dib.SetColorTable(colors, 2));
    ExpectColors(dib, 2, 2, 6);
    ASSERT_TRUE(dib.SetColorTable(dib.GetColorTable() + 1, 3)); // its own, and beyond its end
    EXPECT_EQ(dib.GetColorTable()[0].rgbBlue, 5);
    ExpectColors(dib, 3, 3, 0);
    ASSERT_TRUE(dib.SetColorTable(nullptr, 0));
    EXPECT_TRUE(dib.GetDibLength() == 52 && Number(Packed(dib), 32) == 3);
}

TEST(TarvexDib, CopyColorsGrowsTheBlockWhereNeeded)
{
    CTarvexDib source, target = RandomPicture(4, 1, 24), empty;
    ASSERT_TRUE(source.Create(1, 1, 8));
    for (int i = 0; i < 256; ++i)
        source.GetColorTable()[i].rgbGreen = static_cast<unsigned char>(i);
    target.CopyColorsFromDib(source);
    ExpectColors(target, 256, 256, 255);
    ASSERT_TRUE(source.SetColorTable(source.GetColorTable() + 100, 7)); // now there is room enough
    target.CopyColorsFromDib(source);
    target.CopyColorsFromDib(target);
    ExpectColors(target, 7, 7, 106);
    target.CopyColorsFromDib(empty);
    ExpectColors(target, 0, 7, 106);
    empty.CopyColorsFromDib(source);
    EXPECT_EQ(empty.GetDibLength(), 40);
}

// A picture without pixels is a picture still, but assignment takes it for an empty image.
TEST(TarvexDib, CopiesAreDeepAndWhatIsEmptiedKeepsItsMethod)
{
    CTarvexDib source = RandomPicture(5, 4, 32), assigned = RandomPicture(2, 2, 8), wide, high;
    EXPECT_TRUE(wide.GetInterpolMethod() == CTarvexDib::InterpolNearest && wide.PixelSize() == 0);
    source.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    const Bytes expected = Packed(source);
    const CTarvexDib copy(source), &same = assigned = source;
    assigned = same;
    source.AlphaAlpha(7);
    for (const CTarvexDib* const dib : {&copy, &same})
    {
        EXPECT_EQ(Packed(*dib), expected);
        EXPECT_EQ(dib->GetInterpolMethod(), CTarvexDib::InterpolCubic);
    }

    ASSERT_TRUE(wide.Create(3, 0, 24) && high.Create(0, 3, 24));
    for (const CTarvexDib& empty : {CTarvexDib(), wide, high})
    {
        EXPECT_EQ(Packed(CTarvexDib(empty)), Packed(empty));
        assigned = copy;
        assigned = empty;
        EXPECT_EQ(MetricsOf(assigned), (Metrics{0, 0, 0, 0, 0, 4, 40}));
        EXPECT_TRUE(assigned.Create(3, 3, 24) && LoadPacked(assigned, Packed(assigned)));
        EXPECT_EQ(assigned.GetInterpolMethod(), CTarvexDib::InterpolCubic);
    }
}
