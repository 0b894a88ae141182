#include "AsDefined.h"

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

TEST(TarvexDibConversion, EqualsTheDefinition)
{
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const int width : Widths())
            for (const bool withAlpha : {false, true})
            {
                const int full = bits <= 8 ? 1 << bits : 0, table = full == 0 ? 0 : RandomInt(1, full);
                const CTarvexDib dib = FromPacked(RandomPacked(width, 3, bits, table, table));
                const auto define = [&](CTarvexDib& to)
                {
                    if (bits <= 8) // what the table lacks is black
                        to.SetColorTable(to.GetColorTable(), full);
                    if (bits < (withAlpha ? 32 : 24))
                        reference::ChangeToTrueColor(to, withAlpha);
                };
                ASSERT_NO_FATAL_FAILURE(ExpectAsDefined(
                    dib, [=](CTarvexDib& to) { return to.ChangeToTrueColor(withAlpha); }, define));
            }
}

TEST(TarvexDibClone, EqualsTheDefinition)
{
    for (int round = 0; round < 400; ++round)
    {
        const CTarvexDib source = RandomPicture(RandomInt(1, 20), RandomInt(1, 20), round & 1 ? 24 : 32);
        const int width = RandomInt(0, 25) + (round % 10 == 0 ? 98 : round % 10 == 5 ? 500 : 0);
        const CTarvexDib dib = RandomPicture(width, RandomInt(1, 25), round & 2 ? 24 : 32);
        const int left = RandomInt(0, source.Width() - 1), right = RandomInt(left, source.Width());
        const int top = RandomInt(0, source.Height() - 1), bottom = RandomInt(top, source.Height());
        ASSERT_NO_FATAL_FAILURE(ExpectAsDefined(
            dib, [&](CTarvexDib& to) { return to.Clone(source, left, top, right, bottom); },
            [&](CTarvexDib& to) { reference::Clone(to, source, left, top, right, bottom); }));
    }
}

TEST(TarvexDibClone, StepsThatAddUpToMoreThanTheSource)
{
    const CTarvexDib source = RandomPicture(1, 1048577, 24);
    ExpectAsDefined(
        RandomPicture(1, 200000, 24),
        [&](CTarvexDib& to) { return to.Clone(source, 0, 1048576, 1, 1048577); },
        [&](CTarvexDib& to) { reference::Clone(to, source, 0, 1048576, 1, 1048577); });
}

TEST(TarvexDibClone, ColumnsAreCutBeforeTheyAreShifted)
{
    const CTarvexDib source = RandomPicture(4, 1, 24), dib = RandomPicture(98, 1, 24);
    ASSERT_TRUE(dib.Clone(source, 1, 0, 3, 1)); // 49 * (2.0 / 98) is a hair below 1
    EXPECT_EQ(std::equal(dib.GetPixelFast(49, 0), dib.GetPixelFast(50, 0), source.GetPixelFast(1, 0)),
              49 * (2.0 / 98) < 1);
    EXPECT_TRUE(std::equal(dib.GetPixelFast(50, 0), dib.GetPixelFast(51, 0), source.GetPixelFast(2, 0)));
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

        const auto isInside = [](const CTarvexDib& image, int x, int y)
        { return x >= 0 && y >= 0 && x < image.Width() && y < image.Height(); };
        const bool fits = isInside(dib, destX, destY) && isInside(source, srcX, srcY);
        CTarvexDib expected(dib);
        if (fits)
            reference::CopyRect(expected, destX, destY, source, srcX, srcY, std::clamp(columns, 0, 8), end);
        copied += fits;
        ASSERT_EQ(dib.CopyRect(destX, destY, source, srcX, srcY, columns, end), fits);
        ASSERT_EQ(PixelBytes(dib), PixelBytes(expected));

        Bytes raw; // the same pixels without padding, exactly as long as they are
        for (int row = 0; row < source.Height(); ++row)
            raw.insert(raw.end(), source.GetScanLine(row),
                       source.GetScanLine(row) + source.Width() * source.PixelSize());
        raw.shrink_to_fit();
        unsigned char none;
        ASSERT_EQ(other.CopyRect(destX, destY, raw.empty() ? &none : raw.data(), source.Width(),
                                 source.Height(), bits, srcX, srcY, columns, end),
                  fits);
        ASSERT_EQ(PixelBytes(other), PixelBytes(expected));
    }
    EXPECT_GT(copied, 10000);
}

TEST(TarvexDibCopyRect, FromRowsThatAreNotThereOrItsOwn)
{
    const CTarvexDib quad = RandomPicture(4, 3, 32);
    const Bytes before = PixelBytes(quad);
    EXPECT_FALSE(quad.CopyRect(0, 0, static_cast<unsigned char*>(nullptr), 4, 3, 32, 0, 0, 4, 3));
    EXPECT_FALSE(quad.CopyRect(0, 0, quad, 0, 0, 4, 3) || quad.Clone(quad, 0, 0, 4, 3));
    EXPECT_TRUE(quad.CopyRect(0, 0, nullptr, 4, 3, 32, 0, 0, 0, 3)); // nothing to copy
    EXPECT_EQ(PixelBytes(quad), before);
    EXPECT_TRUE(quad.CopyRect(1, 2, quad.GetScanLine(0), 4, 1, 32, 0, 0, 3, 1)); // shifted by a pixel
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + 12, quad.GetScanLine(0) + 4));

    const CTarvexDib column =
        RandomPicture(1, 3, 32); // from the top down, so that the first row comes through
    const Bytes top(column.GetScanLine(2), column.GetScanLine(2) + 4);
    EXPECT_TRUE(column.CopyRect(0, 1, column.GetScanLine(0), 1, 3, 32, 0, 0, 1, 2));
    EXPECT_EQ(Bytes(column.GetScanLine(0), column.GetScanLine(0) + 4), top);
}
