#pragma once

#include "image/Kernels.h"

/// AddRows and AddPairRows, to be compiled for every instruction set: the compiler makes the vectors.
namespace zel
{

namespace
{

template <int kTaps>
void AddFloatRows(unsigned char* __restrict out, unsigned char* __restrict undecided,
                  const float* const (&rows)[4], const float (&weights)[4], float margin,
                  std::ptrdiff_t count)
{
    const float *const row0 = rows[0], *const row1 = rows[1], *const row2 = rows[2], *const row3 = rows[3];
    const float weight0 = weights[0], weight1 = weights[1], weight2 = weights[2], weight3 = weights[3];
    const float upper = 1.0F - margin;
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        float sum = row0[i] * weight0 + row1[i] * weight1;
        if constexpr (kTaps == 4)
            sum = sum + row2[i] * weight2 + row3[i] * weight3;
        sum += 0.5F;
        const int whole = static_cast<int>(sum);
        const float rest = sum - static_cast<float>(whole);
        out[i] = static_cast<unsigned char>(whole);
        undecided[i] = static_cast<unsigned char>((rest < margin) | (rest > upper));
    }
}

inline void AddRowsInFloats(unsigned char* out, unsigned char* undecided, const float* const (&rows)[4],
                            const float (&weights)[4], int taps, float margin, std::ptrdiff_t count)
{
    (taps == 2 ? AddFloatRows<2> : AddFloatRows<4>)(out, undecided, rows, weights, margin, count);
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
