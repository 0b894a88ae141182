// Results found by hand, and what the image property does not reach.

#include "ImageReference.h"
#include "Pictures.h"

#include <climits>
#include <gtest/gtest.h>

using namespace test;
using Method = CTarvexDib::InterpolMethod;

namespace
{

CTarvexDib OnePixel(const Bytes& bytes)
{
    CTarvexDib dib;
    dib.Create(1, 1, static_cast<int>(8 * bytes.size()));
    WriteBytes(dib.GetPixelFast(0, 0), bytes);
    return dib;
}

constexpr Method kNearest = CTarvexDib::InterpolNearest, kLinear = CTarvexDib::InterpolBiLinear,
                 kCubic = CTarvexDib::InterpolCubic;

CTarvexDib GreyRow(const Bytes& values)
{
    CTarvexDib dib;
    dib.Create(static_cast<int>(values.size()), 1, 32);
    for (std::size_t i = 0; i < values.size(); ++i)
        std::fill_n(dib.GetScanLine(0) + 4 * i, 4, values[i]);
    return dib;
}

// A derived class, which sees the samplers.
struct Probe : CTarvexDib
{
    explicit Probe(const CTarvexDib& dib) : CTarvexDib(dib) {}
    void UseOwn() { m_sampler = static_cast<Sampler>(&Probe::Own); }
    void Sample(double x, double y, unsigned char* out) const { (this->*m_sampler)(x, y, out); }
    void Own(double x, double y, unsigned char* out) const
    {
        std::fill_n(out, 4, static_cast<unsigned char>(x + 10 * y));
    }
};

// The sampler in use is that of the method, and writes no byte after the pixel.
void ExpectSampler(const Probe& dib, Method method)
{
    for (const double x : {0.0, 0.49, 0.5, 1.25, 2.75, 3.0, 3.9})
    {
        Bytes out = {1, 2, 3, 4, 5, 6}, expected = out;
        reference::Sample(dib, method, x, 0.75 * x, dib.PixelSize(), expected.data());
        dib.Sample(x, 0.75 * x, out.data());
        EXPECT_EQ(out, expected) << x;
    }
}

} // namespace

TEST(Blend, ValuesByHand)
{
    const CTarvexDib black = OnePixel({0, 0, 0}), white = OnePixel({255, 255, 255});
    const CTarvexDib target = OnePixel({1, 1, 1});
    const unsigned char& blue = *target.GetPixelFast(0, 0);
    const unsigned char alphas[][3] = {{0, 255, 0}, {1, 254, 0}, {128, 127, 127}, {255, 0, 254}};
    for (const auto& [weight, blackOverWhite, whiteOverBlack] : alphas)
    {
        const CTarvexDib veil = OnePixel({0, 0, 0, weight}), light = OnePixel({255, 255, 255, weight});
        EXPECT_TRUE(target.AlphaBlendPerPixel(&veil, &white) && blue == blackOverWhite);
        EXPECT_TRUE(target.AlphaBlendPerPixel(&light, &black) && blue == whiteOverBlack);
        EXPECT_TRUE(target.AlphaBlend(&white, &black, weight) && blue == blackOverWhite); // of the second
    }

    const CTarvexDib grey = OnePixel({128, 255, 0}), color = OnePixel({200, 255, 90});
    EXPECT_TRUE(target.ShadePerPixel(&grey, &color, 100));
    EXPECT_EQ(PixelBytes(target), (Bytes{100, 254, 0, 0}));

    CTarvexDib mixed = OnePixel({10, 20, 30, 7});
    EXPECT_TRUE(mixed.ColorMix(0.2F, 0.4F, 0.9F, 0.5F)); // half-way to 51, 102, 229
    EXPECT_EQ(PixelBytes(mixed), (Bytes{119, 61, 40, 7}));
}

TEST(ChangeToTrueColor, RefusesWhatWouldBeTooLarge)
{
    CTarvexDib dib; // would have 4 * 2^29 bytes
    EXPECT_TRUE(dib.Create(536870912, 1, 8) && !dib.ChangeToTrueColor(true) && dib.BitCount() == 8);
}

// 200,000 rounded additions of 1 / 200,000 to 2^20 could pass the last row.
TEST(Clone, StaysWithinTheLastRow)
{
    const CTarvexDib high = RandomPicture(1, 1048577, 24), copy = RandomPicture(1, 200000, 24);
    ASSERT_TRUE(copy.Clone(high, 0, 1048576, 1, 1048577));
    EXPECT_TRUE(std::equal(copy.GetScanLine(0), copy.GetScanLine(0) + 3, high.GetScanLine(0)));
}

TEST(CopyRect, RefusesPositionsOutsideRawPixels)
{
    const CTarvexDib dib = RandomPicture(4, 2, 32);
    const Bytes before = PixelBytes(dib);
    Bytes raw(32);
    const int cases[][5] = {{4, 2, 24, 0, 0},      {INT_MIN, 2, 32, 0, 0}, {4, INT_MIN, 32, 0, 0},
                            {0, 2, 32, 0, 0},      {4, 0, 32, 0, 0},       {4, 2, 0, 0, 0},
                            {4, 2, INT_MAX, 0, 0}, {4, 2, 32, 4, 0},       {4, 2, 32, INT_MAX, 0},
                            {4, 2, 32, -1, 0},     {4, 2, 32, 0, 2},       {4, 2, 32, 0, INT_MIN}};
    for (const auto& [width, height, bits, x, y] : cases)
        EXPECT_FALSE(dib.CopyRect(0, 0, raw.data(), width, height, bits, x, y, 4, 2));
    EXPECT_FALSE(dib.CopyRect(0, 0, nullptr, 4, 2, 32, 0, 0, 4, 2));
    EXPECT_TRUE(dib.CopyRect(0, 0, nullptr, INT_MAX, INT_MAX, 32, 0, 0, 0, 2)); // no columns
    EXPECT_TRUE(dib.CopyRect(0, 0, nullptr, 4, 2, 32, 0, 1, 4, 1));             // no rows
    EXPECT_EQ(PixelBytes(dib), before);
}

TEST(CopyRect, CopiesOwnPixelsThatOverlap)
{
    const CTarvexDib row = RandomPicture(4, 1, 32), column = RandomPicture(1, 3, 32);
    const Bytes pixels = PixelBytes(row), top(column.GetPixelFast(0, 0), column.GetPixelFast(0, 0) + 4);
    EXPECT_TRUE(row.CopyRect(1, 0, row.GetScanLine(0), 4, 1, 32, 0, 0, 3, 1));
    EXPECT_TRUE(std::equal(pixels.begin(), pixels.end() - 4, row.GetPixelFast(1, 0)));
    EXPECT_TRUE(column.CopyRect(0, 1, column.GetScanLine(0), 1, 3, 32, 0, 0, 1, 2)); // from the top down
    for (const int y : {0, 1, 2})
        EXPECT_TRUE(std::equal(top.begin(), top.end(), column.GetPixelFast(0, y))) << y;
}

TEST(Resize, ValuesByHand)
{
    const struct
    {
        Method method;
        Bytes from, to;
    } cases[] = {{kNearest, {0, 100}, {0, 100, 100, 100}},
                 {kNearest, {0, 30, 100}, {0, 100}},
                 {kLinear, {0, 100}, {0, 50, 100, 100}},
                 {kLinear, {0, 30, 100}, {0, 65}},
                 {kCubic, {0, 0, 60, 0, 0}, {0, 10, 40, 10, 0}},
                 {kCubic, {0, 0, 60, 0, 0}, {0, 1, 10, 29, 40, 29, 10, 1, 0, 0}},
                 {kCubic, {0, 6, 0, 60, 0, 0}, {1, 11, 10}}};
    for (const auto& c : cases)
    {
        CTarvexDib source = GreyRow(c.from), result = GreyRow(Bytes(c.to.size(), 77));
        result.SetupInterpolMethod(c.method);
        EXPECT_TRUE(result.Resize(source));
        EXPECT_EQ(PixelBytes(result), PixelBytes(GreyRow(c.to))) << c.method;
    }
}

TEST(Resize, MethodsFitTheDepth)
{
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const int method : {kNearest, kLinear, kCubic})
        {
            SCOPED_TRACE(testing::Message() << bits << " bits, method " << method);
            Probe dib(RandomPicture(4, 3, bits));
            for (const int number : {method, -1, 3}) // an unknown method leaves the sampler as it is
            {
                dib.SetupInterpolMethod(static_cast<Method>(number));
                EXPECT_EQ(dib.GetInterpolMethod(), bits < 24 ? 0 : number);
                ExpectSampler(dib, bits < 24 ? kNearest : static_cast<Method>(method));
            }
            ExpectSampler(Probe(dib), kNearest); // a copy starts afresh
        }
}

// A method that is none of the three leaves the source its sampler, which may be that of another depth.
TEST(Resize, SamplersFromBeforeAreSafe)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(2, 2, 32));
    dib.SetupInterpolMethod(static_cast<Method>(5));
    for (const int bits : {24, 32})
        for (const Method method : {kLinear, kCubic})
        {
            CTarvexDib source; // without padding, so that a read of four bytes leaves the picture
            ASSERT_TRUE(source.Create(4, 4, 56 - bits));
            source.SetupInterpolMethod(method);
            ASSERT_TRUE(source.Create(4, 4, bits));
            std::fill_n(source.GetScanLine(0), 2 * bits, static_cast<unsigned char>(9));
            ASSERT_TRUE(dib.resetAlpha() && dib.Resize(source)); // three bytes, so that alpha stays
            EXPECT_EQ(PixelBytes(dib), (Bytes{9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255}));
        }
    Probe source(RandomPicture(4, 4, 24));
    source.UseOwn();
    ASSERT_TRUE(dib.Resize(source));
    EXPECT_EQ(PixelBytes(dib), (Bytes{20, 20, 20, 255, 22, 22, 22, 255, 0, 0, 0, 255, 2, 2, 2, 255}));
}
