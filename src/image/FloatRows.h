#pragma once

#include "image/Kernels.h"

/// AddRows and AddPairRows, to be compiled for every instruction set: the compiler makes the vectors.
namespace zel
{

namespace
{

template <int kTaps>
void AddFloatRows(unsigned char* __restrict out, unsigned char* __restrict undecided,
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
        undecided[i] = ((steps + kUndecidedSteps) & 65535) <= 2 * kUndecidedSteps ? 1 : 0;
    }
}

inline void AddRowsInFloats(unsigned char* out, unsigned char* undecided, const float* const (&rows)[4],
                            const float (&weights)[4], int taps, std::ptrdiff_t count)
{
    (taps == 2 ? AddFloatRows<2> : AddFloatRows<4>)(out, undecided, rows, weights, count);
}

inline void AddPairRowsInWords(unsigned char* __restrict out, const std::uint16_t* upper,
                               const std::uint16_t* lower, int upperWeight, int lowerWeight,
                               const SmallDivisor& divisor, std::ptrdiff_t count)
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

} // namespace

} // namespace zel
