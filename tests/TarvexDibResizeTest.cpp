#include "AsDefined.h"

#include <type_traits>

using namespace test;
using Method = CTarvexDib::InterpolMethod;

namespace
{

CTarvexDib GreyRows(const std::vector<int>& values, int height, int bits)
{
    CTarvexDib dib;
    dib.Create(static_cast<int>(values.size()), height, bits);
    for (int y = 0; y < height; ++y)
        for (std::size_t x = 0; x < values.size(); ++x)
            std::fill_n(dib.GetPixelFast(static_cast<int>(x), y), dib.PixelSize(),
                        static_cast<unsigned char>(values[x]));
    return dib;
}

std::vector<int> ResizedRow(CTarvexDib source, int width, Method method)
{
    CTarvexDib dib;
    dib.Create(width, source.Height(), source.BitCount());
    dib.SetupInterpolMethod(method);
    EXPECT_TRUE(dib.Resize(source));
    std::vector<int> values;
    for (int x = 0; x < width; ++x)
        values.push_back(*dib.GetPixelFast(x, source.Height() / 2));
    return values;
}

struct Probe : CTarvexDib
{
    using CTarvexDib::m_sampler;
    void Sample(double x, double y, unsigned char* out) const { (this->*m_sampler)(x, y, out); }
    template <typename F>
    static auto Is(F member)
    {
        return static_cast<decltype(m_sampler)>(member);
    }
    static auto Nearest() { return Is(&Probe::NearestNeighbour); }
    static auto LinearQuad() { return Is(&Probe::BiLinearQuad); }
    static auto Cubic3() { return Is(&Probe::CubicTriple); }
    void Cross(double x, double y, unsigned char* out) const
    {
        std::fill_n(out, 4, static_cast<unsigned char>(x + 10 * y));
    }
};

} // namespace

TEST(TarvexDibResize, ValuesWorkedOutByHand)
{
    using Row = std::vector<int>;
    for (const int bits : {24, 32})
    {
        const CTarvexDib pair = GreyRows({0, 100}, 1, bits), peak = GreyRows({0, 0, 60, 0, 0}, 3, bits);
        EXPECT_EQ(ResizedRow(pair, 4, CTarvexDib::InterpolBiLinear), (Row{0, 50, 100, 100}));
        EXPECT_EQ(ResizedRow(pair, 4, CTarvexDib::InterpolNearest), (Row{0, 100, 100, 100}));
        EXPECT_EQ(ResizedRow(pair, 6, CTarvexDib::InterpolNearest), (Row{0, 0, 100, 100, 100, 100}));
        EXPECT_EQ(ResizedRow(peak, 5, CTarvexDib::InterpolCubic), (Row{0, 10, 40, 10, 0}));
        EXPECT_EQ(ResizedRow(peak, 5, CTarvexDib::InterpolBiLinear), (Row{0, 0, 60, 0, 0}));
        EXPECT_EQ(ResizedRow(GreyRows({9, 9}, 2, bits), 7, CTarvexDib::InterpolCubic), Row(7, 9));
    }
}

TEST(TarvexDibResize, EqualsTheDefinitionEverywhere)
{
    std::vector<std::pair<int, int>> scales = {
        {1, 1},     {1, 40},    {40, 1},    {2, 5},      {2, 2},   {3, 3},   {15, 22}, {15, 26},
        {34, 28},   {7, 7},     {8, 16},    {8, 24},     {8, 4},   {16, 4},  {5, 40},  {6, 36},
        {7, 35},    {12, 8},    {2, 1024},  {9, 12},     {10, 14}, {6, 10},  {16, 22}, {130, 390},
        {300, 800}, {410, 900}, {400, 400}, {1200, 300}, {64, 4},  {102, 6}, {33, 11}};
    for (int i = 0; i < 60; ++i)
        scales.emplace_back(RandomInt(1, 40), RandomInt(1, 40));
    for (int i = 0; i < 40; ++i) // whole steps, up to 16 and beyond
    {
        const int to = RandomInt(2, 40);
        scales.emplace_back(to * RandomInt(1, 17), to);
    }
    for (const auto& [from, to] : scales)
        for (int mix = 0; mix < 4; ++mix)
            for (const auto method :
                 {CTarvexDib::InterpolNearest, CTarvexDib::InterpolBiLinear, CTarvexDib::InterpolCubic})
            {
                CTarvexDib source = RandomPicture(from, RandomInt(1, 9), mix & 1 ? 24 : 32);
                for (int i = 0; i < source.BytesPerScanLine() * source.Height() && to % 3 < 2; ++i)
                { // few values, and gradients, make ties
                    unsigned char& byte = source.GetScanLine(0)[i];
                    byte = static_cast<unsigned char>(to % 3 == 1 ? 6 * i : byte & 1 ? 255 : 0);
                }
                const int likewise = std::max(source.Height() * to / from, 1); // often by the same factor
                const int heights[] = {RandomInt(1, 20), likewise, source.Height()};
                const int height = std::min(heights[RandomInt(0, 2)], 40);
                const CTarvexDib target = RandomPicture(to, height, mix & 2 ? 24 : 32);
                SCOPED_TRACE(testing::Message() << "from " << source.Width() << " x " << source.Height()
                                                << " of " << source.BitCount() << " bits, method " << method);
                ASSERT_NO_FATAL_FAILURE(ExpectAsDefined(
                    target,
                    [&](CTarvexDib& dib)
                    {
                        dib.SetupInterpolMethod(method);
                        return dib.Resize(source) && source.GetInterpolMethod() == method;
                    },
                    [&](CTarvexDib& dib) { reference::Resize(dib, source, method); }));
            }
}

TEST(TarvexDibResize, MethodsFitTheDepth)
{
    Probe dib;
    EXPECT_EQ(dib.m_sampler, Probe::Nearest());
    dib.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    EXPECT_EQ(dib.GetInterpolMethod(), CTarvexDib::InterpolNearest);
    for (const int bits : {8, 16})
    {
        static_cast<CTarvexDib&>(dib) = FromPacked(RandomPacked(1, 1, bits, 0, bits == 8 ? 256 : 0));
        dib.SetupInterpolMethod(CTarvexDib::InterpolCubic);
        EXPECT_EQ(dib.GetInterpolMethod(), CTarvexDib::InterpolNearest);
    }
    ASSERT_TRUE(dib.Create(1, 1, 32));
    dib.SetupInterpolMethod(CTarvexDib::InterpolBiLinear);
    EXPECT_EQ(dib.m_sampler, Probe::LinearQuad());
    ASSERT_TRUE(dib.Create(1, 1, 24));
    dib.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    EXPECT_EQ(dib.m_sampler, Probe::Cubic3());
    dib.SetupInterpolMethod(static_cast<Method>(5));
    EXPECT_EQ(dib.GetInterpolMethod(), 5);
    EXPECT_EQ(dib.m_sampler, Probe::Cubic3());
    EXPECT_EQ(Probe(dib).m_sampler, Probe::Nearest());
}

TEST(TarvexDibResize, SamplersWriteOnePixel)
{
    for (const int bits : {8, 24, 32})
        for (int method = 0; method < (bits == 8 ? 1 : 3); ++method)
        {
            Probe dib;
            static_cast<CTarvexDib&>(dib) = RandomPicture(4, 3, bits);
            dib.SetupInterpolMethod(static_cast<Method>(method));
            for (const double x : {0.0, 0.49, 0.5, 1.25, 2.75, 3.0, 3.9})
                for (const double y : {0.0, 0.49, 0.5, 1.8, 2.9})
                {
                    Bytes out = {1, 2, 3, 4, 5, 6}, expected = out;
                    reference::Sample(dib, static_cast<Method>(method), x, y, dib.PixelSize(),
                                      expected.data());
                    dib.Sample(x, y, out.data());
                    EXPECT_EQ(out, expected)
                        << bits << " bits, method " << method << " at " << x << ", " << y;
                }
        }
}

TEST(TarvexDibResize, SamplersThatStayedFromBeforeAreSafe)
{
    Probe source; // a four-byte sampler on three-byte pixels, in a picture without padding
    ASSERT_TRUE(source.Create(4, 4, 32));
    source.SetupInterpolMethod(CTarvexDib::InterpolBiLinear);
    ASSERT_TRUE(source.Create(4, 4, 24));
    std::fill_n(source.GetScanLine(0), 48, static_cast<unsigned char>(9));
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(2, 1, 32));
    dib.SetupInterpolMethod(static_cast<Method>(5));
    ASSERT_TRUE(dib.Resize(source));
    EXPECT_EQ(PixelBytes(dib), (Bytes{9, 9, 9, 255, 9, 9, 9, 255}));

    Probe quad; // and a three-byte one on four-byte pixels
    ASSERT_TRUE(quad.Create(4, 4, 24));
    quad.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    ASSERT_TRUE(quad.Create(4, 4, 32) && quad.AlphaAlpha(7));
    ASSERT_TRUE(dib.Resize(quad));
    EXPECT_EQ(PixelBytes(dib), Bytes(8, 255)); // alpha stays

    source.m_sampler = static_cast<decltype(source.m_sampler)>(&Probe::Cross); // one of a derived class
    ASSERT_TRUE(dib.Create(2, 2, 32));
    dib.SetupInterpolMethod(static_cast<Method>(5));
    ASSERT_TRUE(dib.Resize(source));
    EXPECT_EQ(PixelBytes(dib), (Bytes{20, 20, 20, 255, 22, 22, 22, 255, 0, 0, 0, 255, 2, 2, 2, 255}));
}

TEST(TarvexDibResize, TheSourceTakesTheMethodOnlyWithTheResize)
{
    CTarvexDib colour = RandomPicture(3, 3, 32), palette = RandomPicture(3, 3, 8), flat, low;
    ASSERT_TRUE(flat.Create(0, 3, 24) && low.Create(3, 0, 24));
    colour.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    EXPECT_FALSE(colour.Resize(colour));
    EXPECT_FALSE(colour.Resize(flat) || palette.Resize(colour));
    EXPECT_EQ(flat.GetInterpolMethod(), CTarvexDib::InterpolNearest);
    EXPECT_EQ(colour.GetInterpolMethod(), CTarvexDib::InterpolCubic);
    EXPECT_TRUE(flat.Resize(colour)); // nothing to fill, but the source takes the method
    EXPECT_EQ(colour.GetInterpolMethod(), CTarvexDib::InterpolNearest);
    EXPECT_TRUE(low.Resize(flat));
}

TEST(TarvexDibResize, InvariantDivisorsDivideEveryNumber)
{
    for (int divisor = 2; divisor <= 127; ++divisor)
    {
        const zel::InvariantDivisor small(divisor);
        for (int number = 0; 2 * number <= 511 * divisor; ++number)
            ASSERT_EQ(number * small.multiplier >> 16 >> small.shift, number / divisor) << number;
    }
}
