#include "kernels/Kernels.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

static_assert(FLT_EVAL_METHOD == 0, "results are defined by doubles that are rounded after each operation");

namespace zel
{

namespace
{

int Clamp(int index, int length)
{
    return std::clamp(index, 0, length - 1);
}

// The uniform cubic B-spline at distance t >= 0 from its centre.
double SplineWeight(double t)
{
    if (t <= 1.0)
        return 0.5 * t * t * t - t * t + 0.6666666666666666;
    const double u = 2.0 - t;
    return u * u * u * 0.16666666666666666;
}

template <int kBytes>
void ScaleColumns(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets, int count)
{
    for (int i = 0; i < count; ++i, dst += dstStep)
        std::memcpy(dst, src + offsets[i], kBytes);
}

template <int kChannels>
void LinearPixels(unsigned char* dst, int dstStep, const unsigned char* upper, const unsigned char* lower,
                  double fy, const LinearTaps* columns, int count)
{
    for (int i = 0; i < count; ++i, dst += dstStep)
    {
        const auto& [offset, fx] = columns[i];
        const double w11 = fx * fy;
        const double w00 = 1.0 - fx - fy + w11;
        const double w10 = fx - w11;
        const double w01 = fy - w11;
        for (int c = 0; c < kChannels; ++c)
            dst[c] =
                static_cast<unsigned char>(upper[offset[0] + c] * w00 + lower[offset[1] + c] * w11 +
                                           lower[offset[0] + c] * w01 + upper[offset[1] + c] * w10 + 0.5);
    }
}

template <int kChannels>
void CubicPixels(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
                 const double (&rowWeights)[4], const CubicTaps* columns, int count)
{
    for (int i = 0; i < count; ++i, dst += dstStep)
    {
        const CubicTaps& tap = columns[i];
        double sum[4] = {};
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 4; ++k)
            {
                const double weight = rowWeights[j] * tap.weight[k];
                for (int c = 0; c < kChannels; ++c)
                    sum[c] += rows[j][tap.offset[k] + c] * weight;
            }
        for (int c = 0; c < kChannels; ++c)
            dst[c] = static_cast<unsigned char>(sum[c] + 0.5);
    }
}

template <int kTaps>
void HorizontalSums(float* out, const unsigned char* src, const TapSet* columns, int count, int channels)
{
    for (int i = 0; i < count; ++i, out += channels)
        for (int c = 0; c < channels; ++c)
        {
            out[c] = 0.0F;
            for (int k = 0; k < kTaps; ++k)
                out[c] += static_cast<float>(src[columns[i].offsets[k] + c]) * columns[i].coefficients[k];
        }
}

template <int kTaps>
void VerticalSums(unsigned char* __restrict out, unsigned char* __restrict ambiguous,
                  const float* const (&rows)[4], const float (&coefficients)[4], std::ptrdiff_t count)
{
    const float* const source[4] = {rows[0], rows[1], rows[2], rows[3]};
    const float weights[4] = {coefficients[0] * 65536.0F, coefficients[1] * 65536.0F,
                              coefficients[2] * 65536.0F, coefficients[3] * 65536.0F};
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        float sum = source[0][i] * weights[0];
        for (int k = 1; k < kTaps; ++k)
            sum += source[k][i] * weights[k];
        const int rounded = static_cast<int>(sum) + 32768;
        out[i] = static_cast<unsigned char>(rounded >> 16);
        ambiguous[i] = ((rounded + kRoundingMargin) & 65535) <= 2 * kRoundingMargin ? 1 : 0;
    }
}

} // namespace

int NearestOffset(double position, int length, int step)
{
    return Clamp(static_cast<int>(position + 0.5), length) * step;
}

LinearTaps MakeLinearTaps(double position, int length, int step)
{
    const int index = static_cast<int>(position);
    return {{Clamp(index, length) * step, Clamp(index + 1, length) * step}, position - index};
}

CubicTaps MakeCubicTaps(double position, int length, int step)
{
    const int index = static_cast<int>(position);
    const double centre = position - index + 1.0;
    CubicTaps tap;
    for (int k = 0; k < 4; ++k)
    {
        tap.offset[k] = Clamp(index - 1 + k, length) * step;
        tap.weight[k] = SplineWeight(std::fabs(k - centre));
    }
    return tap;
}

void ScaleColumnsRow(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets, int count,
                     int channels)
{
    if (channels == 4)
        return ScaleColumns<4>(dst, dstStep, src, offsets, count);
    if (dstStep != 3)
        return ScaleColumns<3>(dst, dstStep, src, offsets, count);

    // Pixels of three bytes move as four while both rows go on; the next pixel overwrites the surplus byte.
    int whole = count - 1;
    while (whole > 0 && offsets[whole - 1] >= offsets[count - 1])
        --whole;
    ScaleColumns<4>(dst, dstStep, src, offsets, whole);
    ScaleColumns<3>(dst + 3 * whole, dstStep, src, offsets + whole, count - whole);
}

void LinearRow(unsigned char* dst, int dstStep, const unsigned char* upper, const unsigned char* lower,
               double fraction, const LinearTaps* columns, int count, int channels)
{
    (channels == 3 ? LinearPixels<3> : LinearPixels<4>)(dst, dstStep, upper, lower, fraction, columns, count);
}

void CubicRow(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
              const double (&rowWeights)[4], const CubicTaps* columns, int count, int channels)
{
    (channels == 3 ? CubicPixels<3> : CubicPixels<4>)(dst, dstStep, rows, rowWeights, columns, count);
}

void FixUpCubicPixels(const CubicFixUp& row, const int* list, int count)
{
    for (int i = 0; i < count; ++i)
        CubicRow(row.dst + std::ptrdiff_t{row.dstStep} * list[i], row.dstStep, row.rows, row.rowWeights,
                 row.columns + list[i], 1, row.channels);
}

void HorizontalRow(float* out, const unsigned char* src, const TapSet* columns, int taps, int count, int,
                   int channels)
{
    (taps == 2 ? HorizontalSums<2> : HorizontalSums<4>)(out, src, columns, count, channels);
}

void VerticalRow(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                 const float (&coefficients)[4], int taps, std::ptrdiff_t count)
{
    (taps == 2 ? VerticalSums<2> : VerticalSums<4>)(out, ambiguous, rows, coefficients, count);
}

void HorizontalFixedRow(std::uint16_t* out, const unsigned char* src, const FixedTaps& columns, int count,
                        int channels)
{
    for (int i = 0; i < count; ++i, out += channels)
    {
        const unsigned char* const first = src + columns.offsets[i];
        const unsigned char* const second = first + (i < columns.interiorEnd ? columns.step : 0);
        const int weight0 = columns.weights[2 * i], weight1 = columns.weights[2 * i + 1];
        for (int c = 0; c < channels; ++c)
            out[c] = static_cast<std::uint16_t>(first[c] * weight0 + second[c] * weight1);
    }
}

void VerticalFixedRow(unsigned char* out, const std::uint16_t* upper, const std::uint16_t* lower,
                      int upperWeight, int lowerWeight, const InvariantDivisor& divisor, std::ptrdiff_t count)
{
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        const auto sum =
            static_cast<std::uint32_t>(upper[i] * upperWeight + lower[i] * lowerWeight + divisor.half);
        out[i] = static_cast<unsigned char>(sum * divisor.multiplier >> (16 + divisor.shift));
    }
}

void Filter141Row(unsigned char* out, unsigned char* ambiguous, const unsigned char* const (&rows)[3],
                  int step, int pixelSize, int count, int channels)
{
    constexpr int kWeights[] = {1, 4, 1};
    for (int i = 0; i < count; ++i)
        for (int c = 0; c < channels; ++c, ++out, ++ambiguous)
        {
            int sum = 18; // half of 36
            for (int j = 0; j < 3; ++j)
                for (int k = 0; k < 3; ++k)
                    sum += kWeights[j] * kWeights[k] * rows[j][step * i + pixelSize * k + c];
            *out = static_cast<unsigned char>(sum / 36);
            *ambiguous = sum % 36 == 0 ? 1 : 0;
        }
}

} // namespace zel
