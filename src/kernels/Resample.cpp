#include "kernels/Kernels.h"

#include <algorithm>
#include <bit>
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

void LinearPixels(const DefinedRow<LinearTaps>& row, const int* list, int count)
{
    const unsigned char *const upper = row.src[0], *const lower = row.src[1];
    const double fy = row.tap.fraction;
    for (int i = 0; i < count; ++i)
    {
        const auto& [offset, fx] = row.columns[list[i]];
        const double w11 = fx * fy;
        const double w00 = 1.0 - fx - fy + w11;
        const double w10 = fx - w11;
        const double w01 = fy - w11;
        unsigned char* const dst = row.dst + std::ptrdiff_t{row.dstStep} * list[i];
        for (int c = 0; c < row.channels; ++c)
            dst[c] =
                static_cast<unsigned char>(upper[offset[0] + c] * w00 + lower[offset[1] + c] * w11 +
                                           lower[offset[0] + c] * w01 + upper[offset[1] + c] * w10 + 0.5);
    }
}

void CubicPixels(const DefinedRow<CubicTaps>& row, const int* list, int count)
{
    for (int i = 0; i < count; ++i)
    {
        const CubicTaps& tap = row.columns[list[i]];
        unsigned char* const dst = row.dst + std::ptrdiff_t{row.dstStep} * list[i];
        for (int c = 0; c < row.channels; ++c)
        {
            double sum = 0.0;
            for (int j = 0; j < 4; ++j)
                for (int k = 0; k < 4; ++k)
                    sum += row.src[j][tap.offset[k] + c] * (row.tap.weight[j] * tap.weight[k]);
            dst[c] = static_cast<unsigned char>(sum + 0.5);
        }
    }
}

void HorizontalRow(float* out, const unsigned char* src, const ColumnTaps<float>& columns, int taps,
                   int groups, int channels)
{
    const int* offsets = columns.offsets;
    const float* weights = columns.weights;
    for (int g = 0; g < groups; ++g, offsets += kGroup, weights += kGroup * taps)
        for (int c = 0; c < channels; ++c, out += kGroup)
            for (int i = 0; i < kGroup; ++i)
            {
                const unsigned char* const pixel = src + offsets[i] + c;
                out[i] = static_cast<float>(pixel[0]) * weights[i];
                for (int k = 1; k < taps; ++k)
                    out[i] += static_cast<float>(pixel[k * columns.step]) * weights[kGroup * k + i];
            }
}

int VerticalRow(unsigned char* dst, int dstStep, const float* const (&rows)[4], const float (&weights)[4],
                int taps, int count, int channels, std::uint32_t* ambiguous)
{
    int listed = 0;
    for (int i = 0; i < count; ++i, dst += dstStep)
    {
        const int inGroup = i % kGroup, at = (i - inGroup) * channels + inGroup;
        bool isAmbiguous = false;
        for (int c = 0; c < channels; ++c)
        {
            float sum = kVerticalBias;
            for (int k = 0; k < taps; ++k)
                sum += rows[k][at + kGroup * c] * weights[k];
            const auto bits = std::bit_cast<std::uint32_t>(sum);
            dst[c] = static_cast<unsigned char>(bits >> 15);
            isAmbiguous |= (bits & 32767) < 2 * kRoundingMargin;
        }
        if (inGroup == 0)
            ambiguous[listed] = static_cast<std::uint32_t>(i) << 8;
        ambiguous[listed] |= static_cast<std::uint32_t>(isAmbiguous) << inGroup;
        listed += (inGroup == kGroup - 1 || i == count - 1) && (ambiguous[listed] & 255) != 0;
    }
    return listed;
}

void HorizontalFixedRow(std::uint16_t* out, const unsigned char* src,
                        const ColumnTaps<std::uint32_t>& columns, int taps, int groups)
{
    for (int i = 0; i < kGroup * groups; ++i)
        for (int c = 0; c < 4; ++c)
        {
            std::uint32_t sum = 0;
            for (int k = 0; k < taps; ++k)
                sum += src[columns.offsets[i] + columns.step * k + c] *
                       (columns.weights[taps * (i - i % kGroup) + kGroup * k + i % kGroup] & 127);
            out[4 * i + c] = static_cast<std::uint16_t>(sum);
        }
}

void VerticalFixedRow(unsigned char* dst, int dstStep, const std::uint16_t* const (&rows)[3],
                      const int (&weights)[3], int taps, const InvariantDivisor& divisor, int count,
                      int channels, std::uint32_t* ties)
{
    for (int i = 0; i < count; ++i, dst += dstStep)
    {
        if (taps == 3 && i % kGroup == 0)
            ties[i / kGroup] = 0;
        for (int c = 0; c < channels; ++c)
        {
            std::uint32_t sum = divisor.value / 2U;
            for (int k = 0; k < taps; ++k)
                sum += static_cast<std::uint32_t>(rows[k][4 * i + c] * weights[k]);
            dst[c] = static_cast<unsigned char>(sum * divisor.multiplier >> (16 + divisor.shift));
            if (taps == 3 && sum == std::uint32_t{dst[c]} * divisor.value)
                ties[i / kGroup] |= 1U << (4 * (i % kGroup) + c);
        }
    }
}

} // namespace zel
