#include "Pictures.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

using namespace test;

namespace
{

// What becomes of one pixel: given target, first and second as blue, green, red, alpha, changes the target.
using Pixel = unsigned char[4];
using Rule = std::function<void(Pixel& target, const Pixel& first, const Pixel& second)>;

// The whole pixel array of the target under a rule; padding and what the rule leaves alone stay.
Bytes Expected(const CTarvexDib& target, const CTarvexDib& first, const CTarvexDib& second, const Rule& rule)
{
    Bytes bytes = PixelBytes(target);
    for (int y = 0; y < target.Height(); ++y)
        for (int x = 0; x < target.Width(); ++x)
        {
            Pixel t = {}, s1 = {}, s2 = {};
            std::copy_n(target.GetPixelFast(x, y), target.PixelSize(), t);
            std::copy_n(first.GetPixelFast(x, y), first.PixelSize(), s1);
            std::copy_n(second.GetPixelFast(x, y), second.PixelSize(), s2);
            rule(t, s1, s2);
            std::copy_n(t, target.PixelSize(),
                        bytes.begin() + (target.GetPixelFast(x, y) - target.GetScanLine(0)));
        }
    return bytes;
}

// Every operation on two sources with one set of arguments, beside its rule.
struct Operation
{
    const char* name;
    std::function<bool(const CTarvexDib&, const CTarvexDib*, const CTarvexDib*)> run;
    Rule rule;
};

unsigned char Floor(double value)
{
    return static_cast<unsigned char>(static_cast<int>(std::floor(value)));
}

std::vector<Operation> Operations(int alpha, int strength)
{
    const auto byte = static_cast<unsigned char>(alpha);
    const auto shade = [strength](int s1, int s2)
    {
        const double s = strength, k = s * 7.8125e-5, f = 1.0 / (s * 0.01 + 1.0);
        const double v = ((s1 - 128.0) * k + 1.0) * (s2 * f);
        return std::isnan(v) ? 0.0 : std::clamp(std::trunc(v), 0.0, 255.0);
    };
    return {{"AlphaBlendPerPixel", [](auto& t, auto* s1, auto* s2) { return t.AlphaBlendPerPixel(s1, s2); },
             [](Pixel& t, const Pixel& s1, const Pixel& s2)
             {
                 for (int c = 0; c < 3; ++c)
                     t[c] = Floor(s2[c] + (s1[c] - s2[c]) * s1[3] / 256.0);
             }},
            {"AlphaBlend", [byte](auto& t, auto* s1, auto* s2) { return t.AlphaBlend(s1, s2, byte); },
             [alpha](Pixel& t, const Pixel& s1, const Pixel& s2)
             {
                 for (int c = 0; c < 3; ++c)
                     t[c] = Floor(s1[c] + (s2[c] - s1[c]) * alpha / 256.0);
             }},
            {"TransparentBlend",
             [byte](auto& t, auto* s1, auto* s2) { return t.TransparentBlend(s1, s2, 1, byte, 0); },
             [byte](Pixel& t, const Pixel& s1, const Pixel& s2)
             { std::copy_n(s1[0] == 0 && s1[1] == byte && s1[2] == 1 ? s2 : s1, 3, t); }},
            {"ShadePerPixel",
             [strength](auto& t, auto* s1, auto* s2) { return t.ShadePerPixel(s1, s2, strength); },
             [shade](Pixel& t, const Pixel& s1, const Pixel& s2)
             {
                 for (int c = 0; c < 3; ++c)
                     t[c] = static_cast<unsigned char>(shade(s1[c], s2[c]));
             }}};
}

CTarvexDib OnePixel(int bits, unsigned char blue, unsigned char green, unsigned char red,
                    unsigned char alpha = 0)
{
    CTarvexDib dib;
    dib.Create(1, 1, bits);
    const Pixel pixel = {blue, green, red, alpha};
    std::copy_n(pixel, dib.PixelSize(), dib.GetPixelFast(0, 0));
    return dib;
}

constexpr int kStrengths[] = {0,   1,   33,  50,   70,   95,   99,    100,
                              101, 150, -99, -100, -101, 5000, -5000, std::numeric_limits<int>::max()};

} // namespace

TEST(TarvexDibBlend, ValuesWorkedOutByHand)
{
    const CTarvexDib black = OnePixel(24, 0, 0, 0), white = OnePixel(24, 255, 255, 255);
    const CTarvexDib target = OnePixel(24, 1, 1, 1);
    const unsigned char& blue = *target.GetPixelFast(0, 0);
    const struct
    {
        unsigned char alpha, blackOverWhite, whiteOverBlack;
    } cases[] = {{0, 255, 0}, {1, 254, 0}, {128, 127, 127}, {255, 0, 254}};
    for (const auto& c : cases)
    {
        const CTarvexDib veil = OnePixel(32, 0, 0, 0, c.alpha), light = OnePixel(32, 255, 255, 255, c.alpha);
        EXPECT_TRUE(target.AlphaBlendPerPixel(&veil, &white));
        EXPECT_EQ(blue, c.blackOverWhite);
        EXPECT_TRUE(target.AlphaBlendPerPixel(&light, &black));
        EXPECT_EQ(blue, c.whiteOverBlack);
        EXPECT_TRUE(target.AlphaBlend(&white, &black, c.alpha)); // here the alpha weights the second
        EXPECT_EQ(blue, c.blackOverWhite);
    }

    const CTarvexDib grey = OnePixel(24, 128, 255, 0), colour = OnePixel(24, 200, 255, 90);
    EXPECT_TRUE(target.ShadePerPixel(&grey, &colour, 100));
    EXPECT_EQ(PixelBytes(target), (Bytes{100, 254, 0, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &colour, 0));
    EXPECT_EQ(PixelBytes(target), (Bytes{200, 255, 90, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &black, -100)); // 0 times infinity
    EXPECT_EQ(PixelBytes(target), (Bytes{0, 0, 0, 0}));
}

TEST(TarvexDibBlend, EveryPairOfValuesEqualsTheDefinition)
{
    CTarvexDib first, second;
    ASSERT_TRUE(first.Create(256, 256, 32) && second.Create(256, 256, 32));
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
        {
            std::fill_n(first.GetPixelFast(x, y), 3, static_cast<unsigned char>(x));
            std::fill_n(second.GetPixelFast(x, y), 3, static_cast<unsigned char>(y));
        }
    const CTarvexDib target = RandomPicture(256, 256, 24);
    for (int alpha = 0; alpha < 256; alpha += 5)
    {
        first.AlphaAlpha(static_cast<unsigned char>(alpha));
        for (const Operation& operation :
             Operations(alpha, kStrengths[alpha / 5 % static_cast<int>(std::size(kStrengths))]))
        {
            const Bytes expected = Expected(target, first, second, operation.rule);
            ASSERT_TRUE(operation.run(target, &first, &second));
            ASSERT_EQ(PixelBytes(target), expected) << operation.name << ", alpha " << alpha;
        }
    }
}

TEST(TarvexDibBlend, DepthsMixAndSourcesMayBeTheTarget)
{
    for (int width = 0; width < 12; ++width)
        for (int mix = 0; mix < 8; ++mix)
        {
            const CTarvexDib first = RandomPicture(width, 3, mix & 1 ? 24 : 32);
            const CTarvexDib second = RandomPicture(width, 3, mix & 2 ? 24 : 32);
            for (int x = 0; x < width; x += 2) // pixels with the key, and one byte off it
                WriteBytes(first.GetPixelFast(x, 1),
                           {static_cast<unsigned char>(x == 2), static_cast<unsigned char>(x == 4 ? 78 : 77),
                            static_cast<unsigned char>(x != 6)});
            for (const Operation& operation : Operations(77, 40))
            {
                SCOPED_TRACE(testing::Message() << operation.name << " of " << width << ", mixture " << mix);
                const CTarvexDib target = RandomPicture(width, 3, mix & 4 ? 24 : 32);
                const bool fits =
                    first.BitCount() == 32 || operation.name != std::string("AlphaBlendPerPixel");
                const Bytes expected =
                    fits ? Expected(target, first, second, operation.rule) : PixelBytes(target);
                ASSERT_EQ(operation.run(target, &first, &second), fits);
                ASSERT_EQ(PixelBytes(target), expected);

                for (int alias = 1; alias < 4; ++alias)
                {
                    const CTarvexDib itself(first);
                    const CTarvexDib& s1 = alias & 1 ? itself : first;
                    const CTarvexDib& s2 = alias & 2 ? itself : second;
                    const Bytes inPlace =
                        fits ? Expected(itself, s1, s2, operation.rule) : PixelBytes(itself);
                    ASSERT_EQ(operation.run(itself, &s1, &s2), fits);
                    ASSERT_EQ(PixelBytes(itself), inPlace) << "alias " << alias;
                }
            }
        }
}

TEST(TarvexDibBlend, AlphaAndColourOfOneImage)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto mix = [](int r, int g, int b, int w) -> Rule
    {
        return [=](Pixel& t, const Pixel&, const Pixel&)
        {
            t[0] = Floor(t[0] + (b - t[0]) * w / 256.0);
            t[1] = Floor(t[1] + (g - t[1]) * w / 256.0);
            t[2] = Floor(t[2] + (r - t[2]) * w / 256.0);
        };
    };
    const CTarvexDib plane = RandomPicture(7, 5, 8);
    const auto key = [](bool opaque) -> Rule
    {
        return [opaque](Pixel& t, const Pixel&, const Pixel&) {
            t[3] = t[0] == 30 && t[1] == 20 && t[2] == 10 ? 0 : opaque ? 255 : t[3];
        };
    };
    const auto fill = [](unsigned char alpha) -> Rule
    { return [alpha](Pixel& t, const Pixel&, const Pixel&) { t[3] = alpha; }; };
    const struct
    {
        const char* name;
        std::function<bool(CTarvexDib&)> run;
        Rule rule;
    } cases[] = {
        {"mix", [](auto& t) { return t.ColorMix(0.2F, 0.4F, 0.9F, 0.5F); }, mix(51, 102, 229, 128)},
        {"mix fully", [](auto& t) { return t.ColorMix(1.0F, 0.5F, 0.0F, 1.0F); }, mix(255, 127, 0, 256)},
        {"mix cut", [](auto& t) { return t.ColorMix(0.999F, 0.999F, 0.999F, 0.999F); },
         mix(254, 254, 254, 255)},
        {"mix not", [](auto& t) { return t.ColorMix(1.0F, 1.0F, 1.0F, 0.0F); }, mix(0, 0, 0, 0)},
        {"mix confined", [](auto& t) { return t.ColorMix(-3.0F, 7.0F, 0.3F, 2.0F); }, mix(0, 255, 76, 256)},
        {"mix NaN", [nan](auto& t) { return t.ColorMix(nan, 1.0F, nan, 0.75F); }, mix(0, 255, 0, 192)},
        {"weight NaN", [nan](auto& t) { return t.ColorMix(1.0F, 1.0F, 1.0F, nan); }, mix(0, 0, 0, 0)},
        {"constant", [](auto& t) { return t.AlphaAlpha(99); }, fill(99)},
        {"reset", [](auto& t) { return t.resetAlpha(); }, fill(255)},
        {"key", [](auto& t) { return t.TransparentAlpha(10, 20, 30, false); }, key(false)},
        {"key, opaque", [](auto& t) { return t.TransparentAlpha(10, 20, 30, true); }, key(true)},
        {"plane", [&](auto& t) { return t.SetAlphaPlane(&plane); },
         [&, i = 0](Pixel& t, const Pixel&, const Pixel&) mutable
         {
             t[3] = *plane.GetPixelFast(i % 7, i / 7);
             ++i;
         }}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        CTarvexDib dib = RandomPicture(7, 5, 32), triple = RandomPicture(7, 5, 24);
        CTarvexDib palette = RandomPicture(7, 5, 8), empty;
        WriteBytes(dib.GetPixelFast(1, 1), {30, 20, 10, 1, 30, 20, 11, 2, 30, 21, 10, 3, 31, 20, 10, 4});
        const Bytes expected = Expected(dib, dib, dib, c.rule);
        EXPECT_TRUE(c.run(dib));
        EXPECT_EQ(PixelBytes(dib), expected);

        const Bytes before = PixelBytes(triple);
        EXPECT_FALSE(c.run(triple));
        EXPECT_EQ(PixelBytes(triple), before);
        EXPECT_FALSE(c.run(palette));
        EXPECT_FALSE(c.run(empty));
    }
}

TEST(TarvexDibBlend, RefusalsWriteNothing)
{
    const CTarvexDib good = RandomPicture(4, 3, 32), target = RandomPicture(4, 3, 32), empty;
    std::vector<CTarvexDib> others = {empty, RandomPicture(4, 3, 8),
                                      FromPacked(RandomPacked(4, 3, 16, 0, 0))};
    for (const auto& [width, height] : {std::pair(3, 3), {5, 3}, {4, 2}, {4, 4}, {3, 4}, {6, 2}})
        others.push_back(RandomPicture(width, height, 32));
    const Bytes before = PixelBytes(target);
    for (const Operation& operation : Operations(100, 50))
    {
        SCOPED_TRACE(operation.name);
        for (const CTarvexDib& other : others)
        {
            EXPECT_FALSE(operation.run(target, &other, &good));
            EXPECT_FALSE(operation.run(target, &good, &other));
            EXPECT_FALSE(operation.run(other, &good, &good));
        }
        EXPECT_FALSE(operation.run(target, nullptr, &good));
        EXPECT_FALSE(operation.run(target, &good, nullptr));
        EXPECT_FALSE(operation.run(empty, &empty, &empty));
        CTarvexDib high; // nothing to do, however many rows
        ASSERT_TRUE(high.Create(0, 2147483647, 32));
        EXPECT_TRUE(operation.run(high, &high, &high));
    }

    for (const CTarvexDib& plane :
         {empty, good, RandomPicture(4, 2, 8), RandomPicture(5, 3, 8),
          FromPacked(RandomPacked(4, 3, 1, 0, 2)), FromPacked(RandomPacked(4, 3, 4, 0, 16))})
        EXPECT_FALSE(target.SetAlphaPlane(&plane));
    EXPECT_FALSE(target.SetAlphaPlane(nullptr));
    EXPECT_EQ(PixelBytes(target), before);
}
