#include "Pictures.h"

#include <gtest/gtest.h>
#include <limits>

using namespace test;

namespace
{

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

void ExpectBytes(const unsigned char* pixel, const Bytes& bytes)
{
    EXPECT_EQ(Bytes(pixel, pixel + bytes.size()), bytes);
}

} // namespace

TEST(TarvexDibConversion, ValuesWorkedOutByHand)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(5, 1, 8));
    for (int i = 0; i < 5; ++i)
    {
        const auto base = static_cast<unsigned char>(i);
        dib.GetColorTable()[i] = {base, static_cast<unsigned char>(10 + base),
                                  static_cast<unsigned char>(20 + base), 99};
        *dib.GetPixelFast(i, 0) = base;
    }
    ASSERT_TRUE(dib.ChangeToTrueColor(false));
    EXPECT_EQ(PixelBytes(dib), (Bytes{0, 10, 20, 1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24, 0}));
    const Bytes packed = Packed(dib);
    EXPECT_EQ(packed.size(), 56U);
    EXPECT_EQ(Bytes(packed.begin() + 14, packed.begin() + 24), (Bytes{24, 0, 0, 0, 0, 0, 16, 0, 0, 0}));
    EXPECT_EQ(packed[32] | packed[33], 0);

    ASSERT_TRUE(dib.ChangeToTrueColor(true));
    ExpectBytes(dib.GetPixelFast(3, 0), {3, 13, 23, 255, 4, 14, 24, 255});
    const Bytes quad = Packed(dib);
    EXPECT_TRUE(dib.ChangeToTrueColor(false)); // has more already
    EXPECT_EQ(Packed(dib), quad);

    Bytes words = RandomPacked(3, 1, 16, 0, 0);
    const Bytes pixels = {0xFF, 0x7F, 0x01, 0x80, 0x10, 0x22}; // white, blue 1, red 8 green 16 blue 16
    std::copy(pixels.begin(), pixels.end(), words.begin() + 40);
    dib = FromPacked(words);
    ASSERT_TRUE(dib.ChangeToTrueColor(false));
    ExpectBytes(dib.GetPixelFast(0, 0), {255, 255, 255, 8, 0, 0, 132, 132, 66});

    CTarvexDib empty;
    EXPECT_FALSE(empty.ChangeToTrueColor(true));
    CTarvexDib flat; // would be 4 * 2^29 bytes wide
    ASSERT_TRUE(flat.Create(536870912, 1, 8));
    EXPECT_FALSE(flat.ChangeToTrueColor(true));
    EXPECT_EQ(flat.BitCount(), 8);
}

TEST(TarvexDibConversion, IndicesFindTheirColours)
{
    for (const int bits : {1, 4, 8})
        for (int width = 1; width < 20; ++width)
            for (const bool withAlpha : {false, true})
            {
                const int table = RandomInt(1, 1 << bits);
                const Bytes packed = RandomPacked(width, 3, bits, table, table);
                CTarvexDib dib = FromPacked(packed);
                const Bytes rows = PixelBytes(dib);
                const int rowBytes = dib.BytesPerScanLine();
                ASSERT_TRUE(dib.ChangeToTrueColor(withAlpha));
                EXPECT_EQ(dib.GetDibLength(), 40 + (width * (withAlpha ? 32 : 24) + 31) / 32 * 4 * 3);
                for (int y = 0; y < 3; ++y)
                    for (int x = 0; x < width; ++x)
                    {
                        unsigned index = 0;
                        for (int bit = x * bits; bit < (x + 1) * bits; ++bit)
                            index =
                                2 * index + (rows[static_cast<std::size_t>((2 - y) * rowBytes + bit / 8)] >>
                                                 (7 - bit % 8) &
                                             1);
                        Bytes expected(3);
                        if (index < static_cast<unsigned>(table)) // else black
                            std::copy_n(packed.begin() + 40 + 4 * index, 3, expected.begin());
                        if (withAlpha)
                            expected.push_back(255);
                        ExpectBytes(dib.GetPixelFast(x, y), expected);
                    }
            }
}

TEST(TarvexDibClone, EqualsTheDefinition)
{
    for (int round = 0; round < 400; ++round)
    {
        const CTarvexDib source = RandomPicture(RandomInt(1, 20), RandomInt(1, 20), round & 1 ? 24 : 32);
        const int width = RandomInt(0, 25) + (round % 10 == 0 ? 98 : 0);
        const CTarvexDib dib = RandomPicture(width, RandomInt(1, 25), round & 2 ? 24 : 32);
        const int left = RandomInt(0, source.Width() - 1), right = RandomInt(left, source.Width());
        const int top = RandomInt(0, source.Height() - 1), bottom = RandomInt(top, source.Height());
        Bytes expected = PixelBytes(dib);
        double y = top;
        for (int row = 0; row < dib.Height(); ++row)
        {
            for (int i = 0; i < dib.Width(); ++i)
            {
                const double stepX = static_cast<double>(right - left) / dib.Width();
                const unsigned char* from =
                    source.GetPixelFast(left + static_cast<int>(i * stepX), static_cast<int>(y));
                unsigned char* to = expected.data() + (dib.GetPixelFast(i, row) - dib.GetScanLine(0));
                std::copy_n(from, 3, to);
                if (dib.PixelSize() == 4)
                    to[3] = source.PixelSize() == 4 ? from[3] : 255;
            }
            y += static_cast<double>(bottom - top) / dib.Height();
        }
        ASSERT_TRUE(dib.Clone(source, left, top, right, bottom));
        ASSERT_EQ(PixelBytes(dib), expected) << "round " << round;
    }
}

TEST(TarvexDibClone, ColumnsAreCutBeforeTheyAreShifted)
{
    const CTarvexDib source = RandomPicture(4, 1, 24), dib = RandomPicture(98, 1, 24);
    ASSERT_TRUE(dib.Clone(source, 1, 0, 3, 1)); // 49 * (2.0 / 98) is a hair below 1
    EXPECT_EQ(std::equal(dib.GetPixelFast(49, 0), dib.GetPixelFast(50, 0), source.GetPixelFast(1, 0)),
              49 * (2.0 / 98) < 1);
    EXPECT_TRUE(std::equal(dib.GetPixelFast(50, 0), dib.GetPixelFast(51, 0), source.GetPixelFast(2, 0)));
}

TEST(TarvexDibClone, RefusesRectanglesOutsideTheSource)
{
    const CTarvexDib source = RandomPicture(4, 3, 24), palette = RandomPicture(4, 3, 8), empty;
    const CTarvexDib dib = RandomPicture(4, 3, 32);
    const Bytes before = PixelBytes(dib);
    const int rectangles[][4] = {{-1, 0, 4, 3},      {0, -1, 4, 3},     {0, 0, 5, 3}, {0, 0, 4, 4},
                                 {3, 0, 2, 3},       {0, 2, 4, 1},      {4, 0, 4, 3}, {0, 3, 4, 3},
                                 {kMax, 0, kMin, 3}, {0, kMin, 4, kMax}};
    for (const auto& [left, top, right, bottom] : rectangles)
        EXPECT_FALSE(dib.Clone(source, left, top, right, bottom))
            << left << ", " << top << ", " << right << ", " << bottom;
    EXPECT_FALSE(dib.Clone(dib, 0, 0, 4, 3));
    EXPECT_FALSE(dib.Clone(palette, 0, 0, 4, 3));
    EXPECT_FALSE(dib.Clone(empty, 0, 0, 0, 0));
    EXPECT_FALSE(palette.Clone(source, 0, 0, 4, 3));
    EXPECT_EQ(PixelBytes(dib), before);
}

TEST(TarvexDibCopyRect, BothFormsEqualTheDefinition)
{
    const int nasty[] = {kMin, kMin + 1, -1, 0, 1, 2, 5, kMax - 1, kMax};
    const auto number = [&] { return RandomInt(0, 15) ? RandomInt(0, 4) : nasty[RandomInt(0, 8)]; };
    int copied = 0;
    for (int round = 0; round < 40000; ++round)
    {
        const int bits = round & 1 ? 24 : 32;
        const CTarvexDib source = RandomPicture(RandomInt(0, 8), RandomInt(2, 8), bits);
        const CTarvexDib dib = RandomPicture(RandomInt(0, 8), RandomInt(2, 8), bits), other(dib);
        const int destX = number(), destY = number(), srcX = number(), srcY = number(), columns = number(),
                  end = number();

        const auto inside = [](const CTarvexDib& image, std::int64_t x, std::int64_t y)
        { return x >= 0 && y >= 0 && x < image.Width() && y < image.Height(); };
        const bool fits = inside(dib, destX, destY) && inside(source, srcX, srcY);
        Bytes expected = PixelBytes(dib);
        for (int k = 0; fits && k < 8 && srcY + k < end; ++k)
            for (int i = 0; i < 8 && i < columns; ++i)
                if (inside(dib, destX + i, destY + k) && inside(source, srcX + i, srcY + k))
                {
                    std::copy_n(source.GetPixelFast(srcX + i, srcY + k), source.PixelSize(),
                                expected.begin() +
                                    (dib.GetPixelFast(destX + i, destY + k) - dib.GetScanLine(0)));
                    ++copied;
                }
        ASSERT_EQ(dib.CopyRect(destX, destY, source, srcX, srcY, columns, end), fits);
        ASSERT_EQ(PixelBytes(dib), expected);

        Bytes raw; // the same pixels without padding, exactly as long as they are
        for (int row = 0; row < source.Height(); ++row)
            raw.insert(raw.end(), source.GetScanLine(row),
                       source.GetScanLine(row) + source.Width() * source.PixelSize());
        raw.shrink_to_fit();
        unsigned char none;
        ASSERT_EQ(other.CopyRect(destX, destY, raw.empty() ? &none : raw.data(), source.Width(),
                                 source.Height(), bits, srcX, srcY, columns, end),
                  fits);
        ASSERT_EQ(PixelBytes(other), expected);
    }
    EXPECT_GT(copied, 10000);
}

TEST(TarvexDibCopyRect, RefusesOtherDepths)
{
    const CTarvexDib triple = RandomPicture(4, 3, 24), quad = RandomPicture(4, 3, 32),
                     palette = RandomPicture(4, 3, 8), empty;
    const Bytes before = PixelBytes(quad);
    for (const CTarvexDib* source : {&triple, &quad, &palette, &empty})
        EXPECT_FALSE(quad.CopyRect(0, 0, *source, 0, 0, 4, 3));
    EXPECT_FALSE(palette.CopyRect(0, 0, RandomPicture(4, 3, 8), 0, 0, 4, 3));
    Bytes raw(48);
    for (const int bits : {0, 8, 24, 33})
        EXPECT_FALSE(quad.CopyRect(0, 0, raw.data(), 4, 3, bits, 0, 0, 4, 3));
    EXPECT_FALSE(palette.CopyRect(0, 0, raw.data(), 4, 3, 8, 0, 0, 4, 3));
    EXPECT_FALSE(quad.CopyRect(0, 0, static_cast<unsigned char*>(nullptr), 4, 3, 32, 0, 0, 4, 3));
    EXPECT_FALSE(quad.CopyRect(0, 0, raw.data(), kMin, 3, 32, 0, 0, 4, 3));
    EXPECT_TRUE(quad.CopyRect(0, 0, nullptr, 4, 3, 32, 0, 0, 0, 3)); // nothing to copy
    EXPECT_EQ(PixelBytes(quad), before);

    // Its own rows, shifted by a pixel.
    EXPECT_TRUE(quad.CopyRect(1, 2, quad.GetScanLine(0), 4, 1, 32, 0, 0, 3, 1));
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + 12, quad.GetScanLine(0) + 4));
}
