#include "ImageReference.h"
#include "Pictures.h"
#include "Targets.h"

#include <climits>
#include <gtest/gtest.h>
#include <limits>

using namespace test;

namespace
{

CTarvexDib OnePixel(const Bytes& bytes)
{
    CTarvexDib dib;
    dib.Create(1, 1, static_cast<int>(8 * bytes.size()));
    WriteBytes(dib.GetPixelFast(0, 0), bytes);
    return dib;
}

} // namespace

TEST(Blend, ValuesByHand)
{
    const CTarvexDib black = OnePixel({0, 0, 0}), white = OnePixel({255, 255, 255});
    const CTarvexDib target = OnePixel({1, 1, 1});
    const unsigned char& blue = *target.GetPixelFast(0, 0);
    const struct
    {
        unsigned char alpha, blackOverWhite, whiteOverBlack;
    } cases[] = {{0, 255, 0}, {1, 254, 0}, {128, 127, 127}, {255, 0, 254}};
    for (const auto& c : cases)
    {
        const CTarvexDib veil = OnePixel({0, 0, 0, c.alpha}), light = OnePixel({255, 255, 255, c.alpha});
        EXPECT_TRUE(target.AlphaBlendPerPixel(&veil, &white));
        EXPECT_EQ(blue, c.blackOverWhite);
        EXPECT_TRUE(target.AlphaBlendPerPixel(&light, &black));
        EXPECT_EQ(blue, c.whiteOverBlack);
        EXPECT_TRUE(target.AlphaBlend(&white, &black, c.alpha)); // here the alpha weights the second
        EXPECT_EQ(blue, c.blackOverWhite);
    }

    const CTarvexDib grey = OnePixel({128, 255, 0}), color = OnePixel({200, 255, 90});
    EXPECT_TRUE(target.ShadePerPixel(&grey, &color, 100));
    EXPECT_EQ(PixelBytes(target), (Bytes{100, 254, 0, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &color, 0));
    EXPECT_EQ(PixelBytes(target), (Bytes{200, 255, 90, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &black, -100)); // 0 times infinity
    EXPECT_EQ(PixelBytes(target), (Bytes{0, 0, 0, 0}));

    const CTarvexDib keyed = OnePixel({10, 20, 30, 7});
    EXPECT_TRUE(target.TransparentBlend(&keyed, &white, 30, 20, 11) && blue == 10);
    EXPECT_TRUE(target.TransparentBlend(&keyed, &white, 30, 20, 10) && blue == 255);
    const unsigned char& alpha = keyed.GetPixelFast(0, 0)[3];
    EXPECT_TRUE(keyed.TransparentAlpha(31, 20, 10, false) && alpha == 7);
    EXPECT_TRUE(keyed.TransparentAlpha(30, 21, 10, true) && alpha == 255);
    EXPECT_TRUE(keyed.TransparentAlpha(30, 20, 10, true) && alpha == 0);
}

TEST(Blend, ColorMixByHand)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        float red, green, blue, weight;
        Bytes mixed;
    } cases[] = {{0.2F, 0.4F, 0.9F, 0.5F, {119, 61, 40, 7}}, // half-way to 51, 102, 229
                 {1.0F, 0.5F, 0.0F, 1.0F, {0, 127, 255, 7}},
                 {0.999F, 0.999F, 0.999F, 0.999F, {253, 253, 253, 7}}, // to 254, by 255 / 256
                 {1.0F, 1.0F, 1.0F, 0.0F, {10, 20, 30, 7}},
                 {-3.0F, 7.0F, 0.3F, 2.0F, {76, 255, 0, 7}},
                 {nan, 1.0F, nan, 0.75F, {2, 196, 7, 7}},
                 {1.0F, 1.0F, 1.0F, nan, {10, 20, 30, 7}}};
    for (const auto& c : cases)
    {
        CTarvexDib dib = OnePixel({10, 20, 30, 7});
        EXPECT_TRUE(dib.ColorMix(c.red, c.green, c.blue, c.weight));
        EXPECT_EQ(PixelBytes(dib), c.mixed);
    }
}

// As a picture of 65,536 pixels, which is large enough for shading by a table.
TEST(Blend, EveryPairOfBytes)
{
    CTarvexDib first = RandomPicture(256, 256, 32);
    const CTarvexDib second = RandomPicture(256, 256, 24);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
        {
            std::fill_n(first.GetPixelFast(x, y), 3, static_cast<unsigned char>(x));
            std::fill_n(second.GetPixelFast(x, y), 3, static_cast<unsigned char>(y));
        }
    CTarvexDib expected = RandomPicture(256, 256, 24);
    const CTarvexDib result(expected);
    const auto expectSame = [&](const auto& run)
    {
        const Bytes bytes = PixelBytes(expected);
        ForEachTarget([&] { ASSERT_TRUE(run() && PixelBytes(result) == bytes); });
    };
    for (int alpha = 0; alpha < 256; alpha += 5)
    {
        SCOPED_TRACE(alpha);
        const auto byte = static_cast<unsigned char>(alpha);
        reference::AlphaBlend(expected, first, second, alpha);
        expectSame([&] { return result.AlphaBlend(&first, &second, byte); });
        first.AlphaAlpha(byte);
        reference::AlphaBlendPerPixel(expected, first, second);
        expectSame([&] { return result.AlphaBlendPerPixel(&first, &second); });
    }

    std::vector<int> strengths = {INT_MIN, -100000, -12800, -5000, -1000, -70, -7,  0,     1,      33,
                                  50,      70,      95,     100,   101,   250, 399, 12800, 100000, INT_MAX};
    for (int distance = 0; distance <= 12; ++distance) // where results are largest
        strengths.insert(strengths.end(), {-100 - distance, -100 + distance});
    for (const int strength : strengths)
    {
        SCOPED_TRACE(strength);
        reference::ShadePerPixel(expected, first, second, strength);
        expectSame([&] { return result.ShadePerPixel(&first, &second, strength); });
    }
}

TEST(Blend, WithoutColumnsThereAreNoRows)
{
    CTarvexDib high, plane;
    ASSERT_TRUE(high.Create(0, INT_MAX, 32) && plane.Create(0, INT_MAX, 8));
    EXPECT_TRUE(high.AlphaBlendPerPixel(&high, &high) && high.AlphaBlend(&high, &high, 1));
    EXPECT_TRUE(high.TransparentBlend(&high, &high, 1, 1, 1) && high.ShadePerPixel(&high, &high, 1));
    EXPECT_TRUE(high.SetAlphaPlane(&plane) && high.TransparentAlpha(1, 1, 1, true));
    EXPECT_TRUE(high.ColorMix(1, 1, 1, 1) && high.resetAlpha() && plane.ChangeToTrueColor(true));
}
