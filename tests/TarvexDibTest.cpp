#include "Pictures.h"

#include <gtest/gtest.h>

using namespace test;

namespace
{

void ExpectEmpty(const CTarvexDib& dib)
{
    EXPECT_EQ(dib.Width(), 0);
    EXPECT_EQ(dib.Height(), 0);
    EXPECT_EQ(dib.BitCount(), 0);
    EXPECT_EQ(dib.BytesPerScanLine(), 0);
    EXPECT_EQ(dib.GetDibLength(), 40);
    EXPECT_EQ(dib.GetScanLine(0), nullptr);
    EXPECT_EQ(dib.GetColorTable(), nullptr);
}

int ClrUsed(const CTarvexDib& dib)
{
    const Bytes packed = Packed(dib);
    return packed[32] | packed[33] << 8;
}

} // namespace

TEST(TarvexDib, RowsAreFilledUpToFourBytes)
{
    const struct
    {
        int width, height, bits, rowBytes, padding, pixelSize, dibLength;
    } cases[] = {{3, 2, 24, 12, 3, 3, 64}, {4, 2, 24, 12, 0, 3, 64},         {5, 1, 8, 8, 3, 1, 1072},
                 {4, 3, 8, 4, 0, 1, 1076}, {1, 1, 32, 4, 0, 4, 44},          {0, 7, 24, 0, 0, 3, 40},
                 {9, 0, 32, 36, 0, 4, 40}, {0, 2147483647, 8, 0, 0, 1, 1064}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << " of " << c.bits << " bits");
        CTarvexDib dib;
        ASSERT_TRUE(dib.Create(c.width, c.height, c.bits));
        EXPECT_EQ(dib.Width(), c.width);
        EXPECT_EQ(dib.Height(), c.height);
        EXPECT_EQ(dib.BitCount(), c.bits);
        EXPECT_EQ(dib.BytesPerScanLine(), c.rowBytes);
        EXPECT_EQ(dib.Padding(), c.padding);
        EXPECT_EQ(dib.PixelSize(), c.pixelSize);
        EXPECT_EQ(dib.GetDibLength(), c.dibLength);
    }
}

TEST(TarvexDib, DepthsThatOnlyLoadersMake)
{
    const struct
    {
        int bits, rowBytes, padding, pixelSize;
    } cases[] = {{1, 4, 4, 0}, {4, 8, 8, 0}, {16, 20, 2, 2}};
    for (const auto& c : cases)
    {
        const CTarvexDib dib = FromPacked(RandomPacked(9, 2, c.bits, 0, c.bits < 8 ? 1 << c.bits : 0));
        EXPECT_EQ(dib.BytesPerScanLine(), c.rowBytes);
        EXPECT_EQ(dib.Padding(), c.padding);
        EXPECT_EQ(dib.PixelSize(), c.pixelSize);
    }
    const CTarvexDib empty;
    ExpectEmpty(empty);
    EXPECT_EQ(empty.PixelSize(), 0);
    EXPECT_EQ(empty.GetInterpolMethod(), CTarvexDib::InterpolNearest);
}

// Pictures without pixels are pictures still, but assignment takes them for empty ones.
TEST(TarvexDib, WidthOrHeightOfZero)
{
    for (const int width : {0, 3})
    {
        CTarvexDib flat;
        flat.SetupInterpolMethod(CTarvexDib::InterpolNearest);
        ASSERT_TRUE(flat.Create(width, 3 - width, 24));
        const Bytes packed = Packed(flat);
        EXPECT_EQ(packed.size(), 40U);
        EXPECT_EQ(Packed(CTarvexDib(flat)), packed);
        EXPECT_EQ(Packed(FromPacked(packed)), packed);
        const File file(std::tmpfile(), std::fclose);
        EXPECT_TRUE(flat.Save(file.get()));
        EXPECT_EQ(std::ftell(file.get()), 54);
        CTarvexDib assigned = RandomPicture(2, 2, 8);
        assigned = flat;
        ExpectEmpty(assigned);
    }
}

TEST(TarvexDib, PixelsCountFromTheTopAndRowsFromTheBottom)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(3, 2, 24));
    EXPECT_EQ(dib.GetPixelFast(0, 0), dib.GetScanLine(1));
    EXPECT_EQ(dib.GetPixelFast(0, 1), dib.GetScanLine(0));
    EXPECT_EQ(dib.GetPixelFast(2, 1) - dib.GetScanLine(0), 6);
    EXPECT_EQ(dib.GetScanLine(1) - dib.GetScanLine(0), 12);
}

TEST(TarvexDib, CreateWritesWhatItPromises)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(5, 3, 32));
    EXPECT_EQ(PixelBytes(dib), Bytes(60, 255));
    ASSERT_TRUE(dib.Create(2, 3, 24));
    for (int row = 0; row < 3; ++row)
        EXPECT_TRUE(dib.GetScanLine(row)[6] == 0 && dib.GetScanLine(row)[7] == 0);

    ASSERT_TRUE(dib.Create(0, 0, 8));
    Bytes header(1064, 0);
    header[0] = 40;
    header[12] = 1;
    header[14] = 8;
    header[33] = 1; // 256 colours
    EXPECT_EQ(Packed(dib), header);
}

TEST(TarvexDib, TheMethodOutlivesThePicture)
{
    CTarvexDib dib = RandomPicture(2, 2, 24);
    dib.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    EXPECT_FALSE(dib.Create(46341, 46341, 8));
    ExpectEmpty(dib);
    EXPECT_EQ(dib.PixelSize(), 3);
    EXPECT_EQ(dib.GetInterpolMethod(), CTarvexDib::InterpolCubic);
    EXPECT_TRUE(dib.Create(3, 3, 32) && LoadBytes(dib, FileAround(Packed(dib), 0)));
    EXPECT_EQ(dib.GetInterpolMethod(), CTarvexDib::InterpolCubic);
}

TEST(TarvexDib, MoreBitsThanAnIntCounts)
{
    CTarvexDib wide; // less than 2^31 bytes
    EXPECT_TRUE(wide.Create(70000000, 1, 32));
    EXPECT_EQ(wide.BytesPerScanLine(), 280000000);
}

TEST(TarvexDib, ColorTableFollowsItsCount)
{
    const tagRGBQUAD colors[257] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    CTarvexDib dib;
    EXPECT_FALSE(dib.SetColorTable(colors, 0));
    dib = RandomPicture(3, 1, 8);
    const Bytes before = Packed(dib);
    EXPECT_FALSE(dib.SetColorTable(colors, 257));
    EXPECT_FALSE(dib.SetColorTable(colors, -1));
    EXPECT_FALSE(dib.SetColorTable(nullptr, 1));
    EXPECT_EQ(Packed(dib), before);

    ASSERT_TRUE(dib.SetColorTable(colors, 2));
    EXPECT_EQ(dib.GetDibLength(), 52);
    EXPECT_EQ(ClrUsed(dib), 2);
    EXPECT_EQ(dib.GetColorTable()[1].rgbRed, 7);
    ASSERT_TRUE(dib.SetColorTable(dib.GetColorTable() + 1, 3)); // its own, and beyond its end
    EXPECT_EQ(dib.GetColorTable()[0].rgbBlue, 5);
    EXPECT_EQ(dib.GetColorTable()[2].rgbBlue, 0);
    ASSERT_TRUE(dib.SetColorTable(nullptr, 0));
    EXPECT_EQ(dib.GetDibLength(), 44);
    EXPECT_EQ(ClrUsed(dib), 3);

    ASSERT_TRUE(dib.Create(3, 1, 24));
    EXPECT_FALSE(dib.SetColorTable(colors, 0));
    for (const int bits : {1, 4})
    {
        dib = FromPacked(RandomPacked(3, 1, bits, 0, 1 << bits));
        EXPECT_FALSE(dib.SetColorTable(colors, (1 << bits) + 1));
        EXPECT_TRUE(dib.SetColorTable(colors, 1 << bits));
    }
}

TEST(TarvexDib, CopyColorsGrowsTheBlockWhereNeeded)
{
    CTarvexDib source, small, empty;
    ASSERT_TRUE(source.Create(1, 1, 8));
    for (int i = 0; i < 256; ++i)
        source.GetColorTable()[i].rgbGreen = static_cast<unsigned char>(i);
    ASSERT_TRUE(small.Create(4, 1, 8));
    ASSERT_TRUE(small.SetColorTable(source.GetColorTable(), 5));

    small.CopyColorsFromDib(source);
    EXPECT_EQ(small.GetDibLength(), 1068);
    EXPECT_EQ(small.GetColorTable()[255].rgbGreen, 255);
    EXPECT_EQ(ClrUsed(small), 256);

    ASSERT_TRUE(source.SetColorTable(source.GetColorTable() + 100, 7)); // now there is room enough
    small.CopyColorsFromDib(source);
    EXPECT_EQ(small.GetDibLength(), 72);
    EXPECT_EQ(ClrUsed(small), 7);
    EXPECT_EQ(small.GetColorTable()[6].rgbGreen, 106);
    small.CopyColorsFromDib(empty);
    EXPECT_EQ(small.GetDibLength(), 44);
    EXPECT_EQ(ClrUsed(small), 7);
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
    for (const CTarvexDib* dib : {&copy, static_cast<const CTarvexDib*>(&assigned)})
    {
        EXPECT_EQ(Packed(*dib), expected);
        EXPECT_EQ(dib->GetInterpolMethod(), CTarvexDib::InterpolCubic);
        EXPECT_EQ(dib->PixelSize(), 4);
    }

    const CTarvexDib emptyCopy(source); // empty, but with a method
    ExpectEmpty(emptyCopy);
    EXPECT_EQ(emptyCopy.GetInterpolMethod(), CTarvexDib::InterpolCubic);
    CTarvexDib target = RandomPicture(2, 2, 8);
    target = source;
    ExpectEmpty(target);
    EXPECT_EQ(target.GetInterpolMethod(), CTarvexDib::InterpolNearest);
}
