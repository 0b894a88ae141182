#include "kernels/Kernels.h"
#include "kernels/Portable-inl.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

static_assert(FLT_EVAL_METHOD == 0, "results are defined by doubles that are rounded after every operation");

namespace zel
{

namespace
{

int Confine(int index, int length)
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
                  double fy, const LinearTap* columns, int count)
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
void CubicPixelRow(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
                   const double (&rowWeights)[4], const CubicTap* columns, int count)
{
    for (int i = 0; i < count; ++i, dst += dstStep)
    {
        const CubicTap& tap = columns[i];
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
void FilterPixels(float* out, const unsigned char* src, const TapSet* columns, int count, int channels)
{
    for (int i = 0; i < count; ++i, out += channels)
        for (int c = 0; c < channels; ++c)
        {
            out[c] = 0.0F;
            for (int k = 0; k < kTaps; ++k)
                out[c] += static_cast<float>(src[columns[i].offset[k] + c]) * columns[i].weight[k];
        }
}

} // namespace

int NearestTap(double position, int length, int step)
{
    return Confine(static_cast<int>(position + 0.5), length) * step;
}

LinearTap MakeLinearTap(double position, int length, int step)
{
    const int index = static_cast<int>(position);
    return {{Confine(index, length) * step, Confine(index + 1, length) * step}, position - index};
}

CubicTap MakeCubicTap(double position, int length, int step)
{
    const int index = static_cast<int>(position);
    const double centre = position - index + 1.0;
    CubicTap tap;
    for (int k = 0; k < 4; ++k)
    {
        tap.offset[k] = Confine(index - 1 + k, length) * step;
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

    // Pixels of three bytes move as four where both rows go on: the surplus byte is written over by the next.
    int whole = count - 1;
    while (whole > 0 && offsets[whole - 1] >= offsets[count - 1])
        --whole;
    ScaleColumns<4>(dst, dstStep, src, offsets, whole);
    ScaleColumns<3>(dst + 3 * whole, dstStep, src, offsets + whole, count - whole);
}

void LinearRow(unsigned char* dst, int dstStep, const unsigned char* upper, const unsigned char* lower,
               double fraction, const LinearTap* columns, int count, int channels)
{
    (channels == 3 ? LinearPixels<3> : LinearPixels<4>)(dst, dstStep, upper, lower, fraction, columns, count);
}

void HorizontalRow(float* out, const unsigned char* src, const TapSet* columns, int taps, int count, int,
                   int channels)
{
    (taps == 2 ? FilterPixels<2> : FilterPixels<4>)(out, src, columns, count, channels);
}

void VerticalRow(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                 const float (&weights)[4], int taps, std::ptrdiff_t count)
{
    VerticalFloatRow(out, ambiguous, rows, weights, taps, count);
}

InvariantDivisor::InvariantDivisor(int divisor) : half(static_cast<std::uint16_t>(divisor / 2)), shift(0)
{
    while ((2 << shift) < divisor)
        ++shift;
    multiplier = static_cast<std::uint16_t>(((65536 << shift) + divisor - 1) / divisor);
}

void HorizontalFixedRow(std::uint16_t* out, const unsigned char* src, const FixedTaps& columns, int count,
                        int channels)
{
    for (int i = 0; i < count; ++i, out += channels)
    {
        const unsigned char* const first = src + columns.offsets[i];
        const unsigned char* const second = first + (i < columns.pairs ? columns.step : 0);
        const int weight0 = columns.weights[2 * i], weight1 = columns.weights[2 * i + 1];
        for (int c = 0; c < channels; ++c)
            out[c] = static_cast<std::uint16_t>(first[c] * weight0 + second[c] * weight1);
    }
}

void VerticalFixedRow(unsigned char* out, const std::uint16_t* upper, const std::uint16_t* lower,
                      int upperWeight, int lowerWeight, const InvariantDivisor& divisor, std::ptrdiff_t count)
{
    VerticalFixedWords(out, upper, lower, upperWeight, lowerWeight, divisor, count);
}

void Filter141Row(unsigned char* out, unsigned char* ambiguous, const unsigned char* const (&rows)[3],
                  int step, int pixelSize, int count, int channels)
{
    Filter141Words(out, ambiguous, rows, step, pixelSize, count, channels);
}

void CubicRow(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
              const double (&rowWeights)[4], const CubicTap* columns, int count, int channels)
{
    (channels == 3 ? CubicPixelRow<3> : CubicPixelRow<4>)(dst, dstStep, rows, rowWeights, columns, count);
}

void FixUpCubicPixels(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
                      const double (&rowWeights)[4], const CubicTap* columns, const int* list, int count, int,
                      int channels)
{
    for (int i = 0; i < count; ++i)
        CubicRow(dst + std::ptrdiff_t{dstStep} * list[i], dstStep, rows, rowWeights, columns + list[i], 1,
                 channels);
}

} // namespace zel
