#pragma once

#include "kernels/Kernels.h"

/// VerticalRow, VerticalFixedRow and Filter141Row, to be compiled for every instruction set: the compiler
/// makes the vectors.
namespace zel
{

namespace
{

template <int kTaps>
void VerticalFloats(unsigned char* __restrict out, unsigned char* __restrict ambiguous,
                    const float* const (&rows)[4], const float (&weights)[4], std::ptrdiff_t count)
{
    const float *const row0 = rows[0], *const row1 = rows[1], *const row2 = rows[2], *const row3 = rows[3];
    const float weight0 = weights[0] * 65536.0F, weight1 = weights[1] * 65536.0F;
    const float weight2 = weights[2] * 65536.0F, weight3 = weights[3] * 65536.0F;
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        float sum = row0[i] * weight0 + row1[i] * weight1;
        if constexpr (kTaps == 4)
            sum = sum + row2[i] * weight2 + row3[i] * weight3;
        const int steps = static_cast<int>(sum) + 32768;
        out[i] = static_cast<unsigned char>(steps >> 16);
        ambiguous[i] = ((steps + kRoundingMargin) & 65535) <= 2 * kRoundingMargin ? 1 : 0;
    }
}

inline void VerticalFloatRow(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                             const float (&weights)[4], int taps, std::ptrdiff_t count)
{
    (taps == 2 ? VerticalFloats<2> : VerticalFloats<4>)(out, ambiguous, rows, weights, count);
}

inline void VerticalFixedWords(unsigned char* __restrict out, const std::uint16_t* upper,
                               const std::uint16_t* lower, int upperWeight, int lowerWeight,
                               const InvariantDivisor& divisor, std::ptrdiff_t count)
{
    const auto above = static_cast<std::uint16_t>(upperWeight),
               below = static_cast<std::uint16_t>(lowerWeight);
    const std::uint16_t half = divisor.half, multiplier = divisor.multiplier;
    const int shift = divisor.shift;
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        const auto sum = static_cast<std::uint16_t>(upper[i] * above + lower[i] * below + half);
        const auto high = static_cast<std::uint16_t>(std::uint32_t{sum} * multiplier >> 16);
        out[i] = static_cast<unsigned char>(high >> shift);
    }
}

// NOLINTBEGIN(clang-analyzer-core.UndefinedBinaryOperatorResult): it does not follow how far the loops fill
template <int kPixelSize>
void AddAcross(std::uint16_t* __restrict sums, const std::uint16_t* __restrict words, int step, int count,
               int channels)
{
    for (int i = 0; i < count; ++i, sums += channels, words += step)
        for (int c = 0; c < 4; ++c) // of pixels of three bytes, the fourth sum is written over by the next
            sums[c] =
                static_cast<std::uint16_t>(words[c] + 4 * words[kPixelSize + c] + words[2 * kPixelSize + c]);
}

inline void Filter141Words(unsigned char* __restrict out, unsigned char* __restrict ambiguous,
                           const unsigned char* const (&rows)[3], int step, int pixelSize, int count,
                           int channels)
{
    std::uint16_t words[kFilter141Bytes + 1], sums[kFilter141Bytes + 1];
    const unsigned char *const above = rows[0], *const row = rows[1], *const below = rows[2];
    const int bytes = step * (count - 1) + 3 * pixelSize;
    for (int i = 0; i < bytes; ++i)
        words[i] = static_cast<std::uint16_t>(above[i] + 4 * row[i] + below[i]);
    words[bytes] = 0;

    if (step == channels)
        for (int i = 0; i < step * count; ++i)
            sums[i] = static_cast<std::uint16_t>(words[i] + 4 * words[step + i] + words[2 * step + i]);
    else
        (pixelSize == 3 ? AddAcross<3> : AddAcross<4>)(sums, words, step, count, channels);

    const InvariantDivisor divisor(36);
    const std::uint16_t half = divisor.half, multiplier = divisor.multiplier;
    const int shift = divisor.shift;
    for (int i = 0; i < channels * count; ++i)
    {
        const auto sum = static_cast<std::uint16_t>(sums[i] + half);
        const auto quotient = static_cast<std::uint16_t>(
            static_cast<std::uint16_t>(std::uint32_t{sum} * multiplier >> 16) >> shift);
        out[i] = static_cast<unsigned char>(quotient);
        ambiguous[i] = sum == static_cast<std::uint16_t>(36 * quotient) ? 1 : 0;
    }
}
// NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult)

} // namespace

} // namespace zel
