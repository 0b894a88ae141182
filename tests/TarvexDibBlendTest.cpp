#include "AsDefined.h"

#include <functional>
#include <limits>

using namespace test;

namespace
{

using Dib = const CTarvexDib&;
constexpr int kKey[] = {1, 77, 0}; // red, green, blue

// An operation on two sources with one set of arguments, beside its definition. One that takes fewer ignores
// the others.
struct Operation
{
    const char* name;
    int firstBits; // that it needs; 0 where 24 and 32 will do
    int targetBits;
    std::function<bool(CTarvexDib& to, const CTarvexDib* first, const CTarvexDib* second)> run;
    std::function<void(CTarvexDib& to, Dib first, Dib second)> define;
};

Operation Shade(int strength)
{
    return {"ShadePerPixel", 0, 0,
            [=](auto& to, auto* first, auto* second) { return to.ShadePerPixel(first, second, strength); },
            [=](auto& to, Dib first, Dib second) { reference::ShadePerPixel(to, first, second, strength); }};
}

std::vector<Operation> Blends(int alpha)
{
    const auto byte = static_cast<unsigned char>(alpha);
    return {{"AlphaBlendPerPixel", 32, 0,
             [](auto& to, auto* first, auto* second) { return to.AlphaBlendPerPixel(first, second); },
             reference::AlphaBlendPerPixel},
            {"AlphaBlend", 0, 0,
             [=](auto& to, auto* first, auto* second) { return to.AlphaBlend(first, second, byte); },
             [=](auto& to, Dib first, Dib second) { reference::AlphaBlend(to, first, second, alpha); }},
            {"TransparentBlend", 0, 0,
             [](auto& to, auto* first, auto* second)
             { return to.TransparentBlend(first, second, kKey[0], kKey[1], kKey[2]); },
             [](auto& to, Dib first, Dib second)
             { reference::TransparentBlend(to, first, second, kKey[0], kKey[1], kKey[2]); }}};
}

std::vector<Operation> AllOperations(int alpha)
{
    const auto byte = static_cast<unsigned char>(alpha);
    const float weight = static_cast<float>(alpha) / 255.0F;
    std::vector<Operation> all = Blends(alpha);
    all.push_back(Shade(alpha == 0 ? 100 : alpha)); // 100 has a way of its own
    all.insert(
        all.end(),
        {{"SetAlphaPlane", 8, 32, [](auto& to, auto* first, auto*) { return to.SetAlphaPlane(first); },
          [](auto& to, Dib first, Dib) { reference::SetAlphaPlane(to, first); }},
         {"TransparentAlpha", 0, 32,
          [=](auto& to, auto*, auto*)
          { return to.TransparentAlpha(kKey[0], kKey[1], kKey[2], alpha % 2 == 0); },
          [=](auto& to, Dib, Dib)
          { reference::TransparentAlpha(to, kKey[0], kKey[1], kKey[2], alpha % 2 == 0); }},
         {"ColorMix", 0, 32, [=](auto& to, auto*, auto*) { return to.ColorMix(0.9F, 0.4F, weight, weight); },
          [=](auto& to, Dib, Dib) { reference::ColorMix(to, 0.9F, 0.4F, weight, weight); }},
         {"AlphaAlpha", 0, 32, [=](auto& to, auto*, auto*) { return to.AlphaAlpha(byte); },
          [=](auto& to, Dib, Dib) { reference::AlphaAlpha(to, alpha); }},
         {"resetAlpha", 0, 32, [](auto& to, auto*, auto*) { return to.resetAlpha(); },
          [](auto& to, Dib, Dib) { reference::AlphaAlpha(to, 255); }}});
    return all;
}

// Each bit of `aliases` makes the target one of the sources.
void ExpectAsDefined(const Operation& operation, Dib target, Dib first, Dib second, int aliases = 0)
{
    SCOPED_TRACE(testing::Message() << operation.name << " of " << first.BitCount() << " and "
                                    << second.BitCount() << " bits, aliases " << aliases);
    const auto source = [](Dib to, Dib other, int isTarget) -> Dib { return isTarget ? to : other; };
    test::ExpectAsDefined(
        target,
        [&](CTarvexDib& to)
        { return operation.run(to, &source(to, first, aliases & 1), &source(to, second, aliases & 2)); },
        [&](CTarvexDib& to)
        { operation.define(to, source(to, first, aliases & 1), source(to, second, aliases & 2)); });
}

CTarvexDib OnePixel(const Bytes& bytes)
{
    CTarvexDib dib;
    dib.Create(1, 1, static_cast<int>(8 * bytes.size()));
    WriteBytes(dib.GetPixelFast(0, 0), bytes);
    return dib;
}

} // namespace

TEST(TarvexDibBlend, ValuesWorkedOutByHand)
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

    const CTarvexDib grey = OnePixel({128, 255, 0}), colour = OnePixel({200, 255, 90});
    EXPECT_TRUE(target.ShadePerPixel(&grey, &colour, 100));
    EXPECT_EQ(PixelBytes(target), (Bytes{100, 254, 0, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &colour, 0));
    EXPECT_EQ(PixelBytes(target), (Bytes{200, 255, 90, 0}));
    EXPECT_TRUE(target.ShadePerPixel(&grey, &black, -100)); // 0 times infinity
    EXPECT_EQ(PixelBytes(target), (Bytes{0, 0, 0, 0}));

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        float red, green, blue, weight;
        Bytes mixed;
    } mixtures[] = {{0.2F, 0.4F, 0.9F, 0.5F, {119, 61, 40, 7}}, // towards 51, 102, 229
                    {1.0F, 0.5F, 0.0F, 1.0F, {0, 127, 255, 7}},
                    {0.999F, 0.999F, 0.999F, 0.999F, {253, 253, 253, 7}}, // towards 254, by 255 / 256
                    {1.0F, 1.0F, 1.0F, 0.0F, {10, 20, 30, 7}},
                    {-3.0F, 7.0F, 0.3F, 2.0F, {76, 255, 0, 7}},
                    {nan, 1.0F, nan, 0.75F, {2, 196, 7, 7}},
                    {1.0F, 1.0F, 1.0F, nan, {10, 20, 30, 7}}};
    for (const auto& c : mixtures)
    {
        CTarvexDib dib = OnePixel({10, 20, 30, 7});
        EXPECT_TRUE(dib.ColorMix(c.red, c.green, c.blue, c.weight));
        EXPECT_EQ(PixelBytes(dib), c.mixed);
    }
    const CTarvexDib dib = OnePixel({10, 20, 30, 7});
    EXPECT_TRUE(dib.TransparentAlpha(30, 20, 11, false) && dib.GetPixelFast(0, 0)[3] == 7);
    EXPECT_TRUE(dib.TransparentAlpha(30, 20, 11, true) && dib.GetPixelFast(0, 0)[3] == 255);
    EXPECT_TRUE(dib.TransparentAlpha(30, 20, 10, true) && dib.GetPixelFast(0, 0)[3] == 0);
}

TEST(TarvexDibBlend, EveryPairOfValuesEqualsTheDefinition)
{
    CTarvexDib first, second;
    ASSERT_TRUE(first.Create(256, 256, 32) && second.Create(256, 256, 24)); // large enough for a table to pay
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
        for (const Operation& operation : Blends(alpha))
            ExpectAsDefined(operation, target, first, second);
    }

    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    std::vector<int> strengths = {kMin, -100000, -12800, -5000, -1000, -70,    -7,  0,   1,
                                  33,   50,      70,     95,    99,    100,    101, 150, 250,
                                  399,  1000,    5000,   7777,  12800, 100000, kMax};
    for (int distance = 0; distance <= 12; ++distance) // where results are largest
        strengths.insert(strengths.end(), {-100 - distance, -100 + distance});
    for (const int strength : strengths)
        ExpectAsDefined(Shade(strength), target, first, second);
}

TEST(TarvexDibBlend, EveryOperationEqualsItsDefinition)
{
    for (const int width : Widths())
        for (int mix = 0; mix < 8; ++mix)
        {
            const auto picture = [&](int bits)
            {
                CTarvexDib dib = RandomPicture(width, 3, bits);
                for (int x = 0; x < width && bits > 8; x += 2) // pixels with the key, and one byte off it
                    WriteBytes(dib.GetPixelFast(x, 1), {static_cast<unsigned char>(x % 8 == 2),
                                                        static_cast<unsigned char>(x % 8 == 4 ? 78 : 77),
                                                        static_cast<unsigned char>(x % 8 != 6)});
                return dib;
            };
            for (const Operation& operation :
                 AllOperations(width % 3 == 0 ? mix % 2 * 255 : 37 * (width + mix) % 256))
            {
                const int firstBits = operation.firstBits != 0 ? operation.firstBits : mix & 1 ? 24 : 32;
                const int targetBits = operation.targetBits != 0 ? operation.targetBits : mix & 4 ? 24 : 32;
                const CTarvexDib first = picture(firstBits), target = picture(targetBits),
                                 second = RandomPicture(width, 3, mix & 2 ? 24 : 32);
                ASSERT_NO_FATAL_FAILURE(ExpectAsDefined(operation, target, first, second));
                for (int aliases = 1; aliases < 4 && operation.targetBits == 0; ++aliases)
                    ASSERT_NO_FATAL_FAILURE(ExpectAsDefined(operation, first, first, second, aliases));
            }
        }
}

TEST(TarvexDibBlend, SourcesAreThereAndOfTheTargetsSize)
{
    CTarvexDib good = RandomPicture(4, 3, 32), target = RandomPicture(4, 3, 32), high;
    const Bytes before = PixelBytes(target);
    ASSERT_TRUE(high.Create(0, 2147483647, 32)); // nothing to do, however many rows
    std::vector<Operation> operations = Blends(100);
    operations.push_back(Shade(50));
    for (const Operation& operation : operations)
    {
        EXPECT_FALSE(operation.run(target, nullptr, &good) || operation.run(target, &good, nullptr));
        for (const auto& [width, height] : {std::pair(3, 3), {5, 3}, {4, 2}, {4, 4}, {3, 4}, {6, 2}})
        {
            const CTarvexDib other = RandomPicture(width, height, 32);
            EXPECT_FALSE(operation.run(target, &other, &good) || operation.run(target, &good, &other))
                << operation.name << " from " << width << " x " << height;
        }
        EXPECT_TRUE(operation.run(high, &high, &high));
    }
    EXPECT_FALSE(target.SetAlphaPlane(nullptr));
    for (const auto& [width, height] : {std::pair(5, 3), {4, 2}})
    {
        const CTarvexDib plane = RandomPicture(width, height, 8);
        EXPECT_FALSE(target.SetAlphaPlane(&plane));
    }
    EXPECT_EQ(PixelBytes(target), before);
}
