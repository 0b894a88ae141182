#include "kernels/Kernels.h"

#include <cstring>

namespace zel
{

namespace
{

constexpr std::uint32_t kColorMask = 0x00FFFFFF;
constexpr std::uint32_t kAlphaMask = 0xFF000000;

// from + (to - from) * weight / 256, rounded down.
unsigned char Lerp(int from, int to, int weight)
{
    return static_cast<unsigned char>(from + (((to - from) * weight) >> 8));
}

// Truncates towards zero and clamps. NaN counts as 0.
unsigned char ToByte(double value)
{
    if (value >= 255.0)
        return 255;
    return value > 0.0 ? static_cast<unsigned char>(value) : static_cast<unsigned char>(0);
}

} // namespace

void BlendRowByAlpha(const BlendRows& rows)
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
    {
        const int alpha = s1[3];
        for (int c = 0; c < 3; ++c)
            dst[c] = Lerp(s2[c], s1[c], alpha);
    }
}

void BlendRow(const BlendRows& rows, int alpha)
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
        for (int c = 0; c < 3; ++c)
            dst[c] = Lerp(s1[c], s2[c], alpha);
}

void KeyRow(const BlendRows& rows, const unsigned char (&key)[3])
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
    {
        const bool isKey = s1[0] == key[0] && s1[1] == key[1] && s1[2] == key[2];
        const unsigned char* source = isKey ? s2 : s1;
        for (int c = 0; c < 3; ++c)
            dst[c] = source[c];
    }
}

ShadeFactors::ShadeFactors(int strength) : k(strength * 7.8125e-5), f(1.0 / (strength * 0.01 + 1.0))
{
    for (int value = 0; value < 256; ++value)
    {
        shading[value] = (value - 128.0) * k + 1.0;
        shaded[value] = value * f;
    }
}

void ShadeRow(const BlendRows& rows, const ShadeFactors& factors)
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
        for (int c = 0; c < 3; ++c)
            dst[c] = ToByte(factors.shading[s1[c]] * factors.shaded[s2[c]]);
}

void FillShadeTable(ShadeTable& table, const ShadeFactors& factors)
{
    for (int s1 = 0; s1 < 256; ++s1)
        for (int s2 = 0; s2 < 256; ++s2)
            table.shaded[s1][s2] = ToByte(factors.shading[s1] * factors.shaded[s2]);
}

void ShadeRowByTable(const BlendRows& rows, const ShadeTable& table)
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
        for (int c = 0; c < 3; ++c)
            dst[c] = table.shaded[s1[c]][s2[c]];
}

void MultiplyRow(const BlendRows& rows)
{
    auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows;
    for (int x = 0; x < count; ++x, dst += dstStep, s1 += s1Step, s2 += s2Step)
        for (int c = 0; c < 3; ++c)
            dst[c] = static_cast<unsigned char>(s1[c] * s2[c] >> 8);
}

void SetAlphaRow(unsigned char* dst, const unsigned char* plane, int count)
{
    for (int x = 0; x < count; ++x)
        dst[4 * x + 3] = plane[x];
}

void FillAlphaRow(unsigned char* dst, unsigned char alpha, int count)
{
    for (int x = 0; x < count; ++x)
        dst[4 * x + 3] = alpha;
}

void KeyAlphaRow(unsigned char* dst, std::uint32_t key, bool opaqueOthers, int count)
{
    const std::uint32_t others = opaqueOthers ? kAlphaMask : 0;
    for (int x = 0; x < count; ++x, dst += 4)
    {
        std::uint32_t pixel;
        std::memcpy(&pixel, dst, sizeof pixel);
        pixel = (pixel & kColorMask) == key ? key : pixel | others;
        std::memcpy(dst, &pixel, sizeof pixel);
    }
}

void LerpToColorRow(unsigned char* dst, const int (&color)[3], int weight, int count)
{
    for (int x = 0; x < count; ++x, dst += 4)
        for (int c = 0; c < 3; ++c)
            dst[c] = Lerp(dst[c], color[c], weight);
}

} // namespace zel
