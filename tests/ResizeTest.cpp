#include "ImageReference.h"
#include "Pictures.h"
#include "Targets.h"

#include <climits>
#include <gtest/gtest.h>

using namespace test;
using Method = CTarvexDib::InterpolMethod;

namespace
{

constexpr Method kNearest = CTarvexDib::InterpolNearest, kLinear = CTarvexDib::InterpolBiLinear,
                 kCubic = CTarvexDib::InterpolCubic;

// One row or one column of grey pixels.
CTarvexDib Line(const Bytes& values, int bits, bool isColumn)
{
    const int length = static_cast<int>(values.size());
    CTarvexDib dib;
    dib.Create(isColumn ? 1 : length, isColumn ? length : 1, bits);
    for (int i = 0; i < length; ++i)
        std::fill_n(dib.GetPixelFast(isColumn ? 0 : i, isColumn ? i : 0), dib.PixelSize(),
                    values[static_cast<std::size_t>(i)]);
    return dib;
}

// A derived class, which sees the samplers.
struct Probe : CTarvexDib
{
    using CTarvexDib::m_sampler;
    Probe() = default;
    explicit Probe(const CTarvexDib& dib) : CTarvexDib(dib) {}
    template <typename Member>
    static Sampler As(Member member)
    {
        return static_cast<Sampler>(member);
    }
    static Sampler Nearest() { return As(&Probe::NearestNeighbour); }
    static Sampler Of(Method method, int bits)
    {
        if (method == kLinear)
            return bits == 24 ? As(&Probe::BiLinearTriple) : As(&Probe::BiLinearQuad);
        return bits == 24 ? As(&Probe::CubicTriple) : As(&Probe::CubicQuad);
    }
    void Sample(double x, double y, unsigned char* out) const { (this->*m_sampler)(x, y, out); }
    void Own(double x, double y, unsigned char* out) const
    {
        std::fill_n(out, 4, static_cast<unsigned char>(x + 10 * y));
    }
};

} // namespace

TEST(Resize, ValuesByHand)
{
    const struct
    {
        Method method;
        Bytes from, to;
    } cases[] = {{kNearest, {0, 100}, {0, 100, 100, 100}},
                 {kNearest, {0, 100}, {0, 0, 100, 100, 100, 100}},
                 {kNearest, {0, 30, 100}, {0, 100}},
                 {kLinear, {0, 100}, {0, 50, 100, 100}},
                 {kLinear, {0, 100}, {0, 67, 100}},
                 {kLinear, {0, 30, 100}, {0, 65}},
                 {kLinear, {0, 0, 60, 0, 0}, {0, 0, 60, 0, 0}},
                 {kLinear, {1, 2, 3, 4, 5, 6}, {1, 3, 5}},
                 {kCubic, {0, 0, 60, 0, 0}, {0, 10, 40, 10, 0}},
                 {kCubic, {0, 0, 60, 0, 0}, {0, 1, 10, 29, 40, 29, 10, 1, 0, 0}},
                 {kCubic, {0, 6, 0, 60, 0, 0}, {1, 11, 10}},
                 {kCubic, {9, 9}, {9, 9, 9, 9, 9, 9, 9}}};
    for (const auto& c : cases)
        for (const int bits : {24, 32})
            for (const bool isColumn : {false, true})
            {
                CTarvexDib source = Line(c.from, bits, isColumn);
                CTarvexDib result = Line(Bytes(c.to.size(), 77), bits, isColumn);
                result.SetupInterpolMethod(c.method);
                ForEachTarget(
                    [&]
                    {
                        EXPECT_TRUE(result.Resize(source));
                        EXPECT_EQ(PixelBytes(result), PixelBytes(Line(c.to, bits, isColumn))) << c.method;
                    });
            }
}

TEST(Resize, MethodsFitTheDepth)
{
    for (const int bits : {0, 1, 4, 8, 16, 24, 32})
        for (const Method method : {kNearest, kLinear, kCubic})
        {
            Probe dib(bits == 0 ? CTarvexDib() : RandomPicture(2, 2, bits));
            dib.SetupInterpolMethod(method);
            const bool isNearest = bits < 24 || method == kNearest;
            EXPECT_EQ(dib.GetInterpolMethod(), isNearest ? kNearest : method);
            EXPECT_EQ(dib.m_sampler, isNearest ? Probe::Nearest() : Probe::Of(method, bits));
            EXPECT_EQ(Probe(dib).m_sampler, Probe::Nearest()); // a copy starts afresh
            for (const int unknown : {INT_MIN, -1, 3, INT_MAX})
            {
                dib.SetupInterpolMethod(static_cast<Method>(unknown));
                EXPECT_EQ(dib.GetInterpolMethod(), bits < 24 ? 0 : unknown);
                EXPECT_EQ(dib.m_sampler, isNearest ? Probe::Nearest() : Probe::Of(method, bits));
            }
        }
}

TEST(Resize, SamplersWriteOnePixel)
{
    for (const int bits : {8, 24, 32})
        for (const Method method : {kNearest, kLinear, kCubic})
        {
            Probe dib(RandomPicture(4, 3, bits));
            dib.SetupInterpolMethod(method);
            for (const double x : {0.0, 0.49, 0.5, 1.25, 2.75, 3.0, 3.9})
                for (const double y : {0.0, 0.49, 0.5, 1.8, 2.9})
                {
                    Bytes out = {1, 2, 3, 4, 5, 6}, expected = out;
                    reference::Sample(dib, dib.GetInterpolMethod(), x, y, dib.PixelSize(), expected.data());
                    dib.Sample(x, y, out.data());
                    EXPECT_EQ(out, expected) << bits << " bits, method " << method << ": " << x << ", " << y;
                }
        }
}

// A method that is none of the three leaves the source its sampler, which may be that of another depth.
TEST(Resize, SamplersFromBeforeAreSafe)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(2, 2, 32));
    dib.SetupInterpolMethod(static_cast<Method>(5));
    for (const Method method : {kLinear, kCubic})
    {
        Probe triple, quad; // without padding, so that a read of four bytes leaves the picture
        ASSERT_TRUE(triple.Create(4, 4, 32) && quad.Create(4, 4, 24));
        triple.SetupInterpolMethod(method);
        quad.SetupInterpolMethod(method);
        ASSERT_TRUE(triple.Create(4, 4, 24) && quad.Create(4, 4, 32) && quad.AlphaAlpha(7));
        std::fill_n(triple.GetScanLine(0), 48, static_cast<unsigned char>(9));
        ASSERT_TRUE(dib.resetAlpha() && dib.Resize(triple));
        EXPECT_EQ(PixelBytes(dib), (Bytes{9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255, 9, 9, 9, 255}));
        ASSERT_TRUE(dib.Resize(quad));
        EXPECT_EQ(PixelBytes(dib), Bytes(16, 255)); // three bytes, so that alpha stays
    }
    Probe source(RandomPicture(4, 4, 24));
    source.m_sampler = Probe::As(&Probe::Own);
    ASSERT_TRUE(dib.Resize(source));
    EXPECT_EQ(PixelBytes(dib), (Bytes{20, 20, 20, 255, 22, 22, 22, 255, 0, 0, 0, 255, 2, 2, 2, 255}));
}
