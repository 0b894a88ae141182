#pragma once

#include "kernels/Kernels.h"

/// The vector rows of Kernels.h. The source of an instruction set defines a type Vector, its operations
/// and the rows that need instructions of their own, and then includes this file, so that the code is
/// compiled once per instruction set.
///
/// All names here and there have internal linkage: were they shared, the linker could keep the AVX2 version
/// of a function for a caller that runs on SSE2.
///
/// Whole vectors are done here. What is left of a row, and mixtures of steps that a set cannot load, go to
/// the scalar rows.
namespace zel
{

namespace
{

/// \name Loops that the compiler vectorises
/// @{

template <int kTaps>
void VerticalFloats(unsigned char* __restrict out, unsigned char* __restrict ambiguous,
                    const float* const (&rows)[4], const float (&coefficients)[4], std::ptrdiff_t begin,
                    std::ptrdiff_t count)
{
    const float *const row0 = rows[0], *const row1 = rows[1], *const row2 = rows[2], *const row3 = rows[3];
    const float weight0 = coefficients[0] * 65536.0F, weight1 = coefficients[1] * 65536.0F;
    const float weight2 = coefficients[2] * 65536.0F, weight3 = coefficients[3] * 65536.0F;
    for (std::ptrdiff_t i = begin; i < count; ++i)
    {
        float sum = row0[i] * weight0 + row1[i] * weight1;
        if constexpr (kTaps == 4)
            sum = sum + row2[i] * weight2 + row3[i] * weight3;
        const int rounded = static_cast<int>(sum) + 32768;
        out[i] = static_cast<unsigned char>(rounded >> 16);
        ambiguous[i] = ((rounded + kRoundingMargin) & 65535) <= 2 * kRoundingMargin ? 1 : 0;
    }
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
void SumAcross(std::uint16_t* __restrict sums, const std::uint16_t* __restrict words, int step, int count,
               int channels)
{
    for (int i = 0; i < count; ++i, sums += channels, words += step)
        for (int c = 0; c < 4; ++c) // in pixels of three bytes the next pixel overwrites the fourth sum
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
        (pixelSize == 3 ? SumAcross<3> : SumAcross<4>)(sums, words, step, count, channels);

    constexpr InvariantDivisor divisor(36);
    for (int i = 0; i < channels * count; ++i)
    {
        const auto sum = static_cast<std::uint16_t>(sums[i] + divisor.half);
        const auto quotient = static_cast<std::uint16_t>(
            static_cast<std::uint16_t>(std::uint32_t{sum} * divisor.multiplier >> 16) >> divisor.shift);
        out[i] = static_cast<unsigned char>(quotient);
        ambiguous[i] = sum == static_cast<std::uint16_t>(36 * quotient) ? 1 : 0;
    }
}
// NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult)

/// @}

template <typename Vector>
struct VectorRows
{
    static constexpr int kBytes = static_cast<int>(sizeof(Vector));
    static constexpr int kPixels = kBytes / 4; // of 4 bytes

    static void Horizontal(float* out, const unsigned char* src, const TapSet* columns, int taps, int count,
                           int wideReadEnd, int channels)
    {
        (taps == 2 ? HorizontalPixels<2> : HorizontalPixels<4>)(out, src, columns, wideReadEnd, channels);
        HorizontalRow(out + std::ptrdiff_t{channels} * wideReadEnd, src, columns + wideReadEnd, taps,
                      count - wideReadEnd, 0, channels);
    }

    static void Vertical(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                         const float (&coefficients)[4], int taps, std::ptrdiff_t count)
    {
        if (taps == 2)
            return VerticalFloats<2>(out, ambiguous, rows, coefficients, 0, count);
        const std::ptrdiff_t done = VerticalFourTaps(out, ambiguous, rows, coefficients, count);
        VerticalFloats<4>(out, ambiguous, rows, coefficients, done, count);
    }

    static void FixUpCubic(const CubicFixUp& row, const int* list, int count)
    {
        const int rowCount = row.rowWeights[3] == 0.0 ? 3 : 4; // adding 0 changes no sum
        for (int i = 0; i < count; ++i)
        {
            const int column = list[i];
            if (column >= row.wideReadEnd)
            {
                FixUpCubicPixels(row, &column, 1);
                continue;
            }
            const CubicTaps& tap = row.columns[column];
            const int tapCount = tap.weight[3] == 0.0 ? 3 : 4;
            Doubles sum = {};
            for (int j = 0; j < rowCount; ++j)
                for (int k = 0; k < tapCount; ++k)
                    AddProduct(sum, row.rows[j] + tap.offset[k], row.rowWeights[j] * tap.weight[k]);
            StoreRounded(row.dst + std::ptrdiff_t{row.dstStep} * column, sum, row.channels);
        }
    }

    static void HorizontalFixed(std::uint16_t* out, const unsigned char* src, const FixedTaps& columns,
                                int count, int channels)
    {
        const int done = HorizontalFixedPixels(out, src, columns, channels);
        const FixedTaps rest = {columns.offsets + done, columns.weights + 2 * done, columns.step,
                                columns.interiorEnd - done, 0};
        HorizontalFixedRow(out + std::ptrdiff_t{channels} * done, src, rest, count - done, channels);
    }

    static void ScaleColumns(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets,
                             int count, int channels)
    {
        const int done = dstStep == channels ? ScaleColumnsShuffle(dst, src, offsets, count, channels) : 0;
        if (done < count)
            ScaleColumnsRow(dst + dstStep * done, dstStep, src, offsets + done, count - done, channels);
    }

    static void BlendByAlpha(const BlendRows& rows)
    {
        BlendRowByAlpha(rows.After(
            ByPixels(rows, [](Vector first, Vector second) { return LerpByAlpha(first, second); })));
    }

    static void Blend(const BlendRows& rows, int alpha)
    {
        const Vector weight = WeightOf<Vector>(alpha);
        const int done = alpha == 0 ? ByBytes(rows, [](Vector first, Vector) { return first; })
                                    : ByBytes(rows, [weight](Vector first, Vector second)
                                              { return Lerp(first, second, weight); });
        BlendRow(rows.After(done), alpha);
    }

    static void Multiply(const BlendRows& rows)
    {
        MultiplyRow(rows.After(ByBytes(rows,
                                       [](Vector first, Vector second)
                                       {
                                           return Demote(
                                               MulHigh(PromoteLowerTimes256(first), PromoteLower(second)),
                                               MulHigh(PromoteUpperTimes256(first), PromoteUpper(second)));
                                       })));
    }

    static void Key(const BlendRows& rows, const unsigned char (&key)[3])
    {
        const Vector colors = Set<Vector>(0x00FFFFFF);
        const Vector wanted = Set<Vector>(static_cast<std::uint32_t>(key[0] | key[1] << 8 | key[2] << 16));
        const int done = ByPixels(rows, [=](Vector first, Vector second)
                                  { return IfThenElse(Equal32(And(first, colors), wanted), second, first); });
        KeyRow(rows.After(done), key);
    }

    static void SetAlpha(unsigned char* dst, const unsigned char* plane, int count)
    {
        const Vector colors = Set<Vector>(0x00FFFFFF);
        int done = 0;
        for (; done + kPixels <= count; done += kPixels)
            Store(dst + 4 * done,
                  Or(And(colors, Load<Vector>(dst + 4 * done)), LoadAsAlpha<Vector>(plane + done)));
        SetAlphaRow(dst + 4 * done, plane + done, count - done);
    }

    static void FillAlpha(unsigned char* dst, unsigned char alpha, int count)
    {
        const Vector colors = Set<Vector>(0x00FFFFFF), fill = Set<Vector>(std::uint32_t{alpha} << 24);
        int done = 0;
        for (; done + kPixels <= count; done += kPixels)
            Store(dst + 4 * done, Or(And(colors, Load<Vector>(dst + 4 * done)), fill));
        FillAlphaRow(dst + 4 * done, alpha, count - done);
    }

    static void KeyAlpha(unsigned char* dst, std::uint32_t key, bool opaqueOthers, int count)
    {
        const Vector colors = Set<Vector>(0x00FFFFFF), wanted = Set<Vector>(key);
        const Vector others = Set<Vector>(opaqueOthers ? 0xFF000000 : 0);
        int done = 0;
        for (; done + kPixels <= count; done += kPixels)
        {
            const auto pixels = Load<Vector>(dst + 4 * done);
            const Vector isKey = Equal32(And(pixels, colors), wanted);
            Store(dst + 4 * done, IfThenElse(isKey, wanted, Or(pixels, others)));
        }
        KeyAlphaRow(dst + 4 * done, key, opaqueOthers, count - done);
    }

    static void LerpToColor(unsigned char* dst, const int (&color)[3], int weight, int count)
    {
        if (weight == 0)
            return;
        const Vector colors = Set<Vector>(0x00FFFFFF), share = WeightOf<Vector>(weight);
        const Vector target =
            Set<Vector>(static_cast<std::uint32_t>(color[0] | color[1] << 8 | color[2] << 16));
        int done = 0;
        for (; done + kPixels <= count; done += kPixels)
        {
            const auto pixels = Load<Vector>(dst + 4 * done);
            const Vector mixed = weight == 256 ? target : Lerp(pixels, target, share);
            Store(dst + 4 * done, IfThenElse(colors, mixed, pixels));
        }
        LerpToColorRow(dst + 4 * done, color, weight, count - done);
    }

    static void Bgr24ToBgra32(unsigned char* dst, const unsigned char* src, int count)
    {
        const Vector opaque = Set<Vector>(0xFF000000);
        int done = 0;
        for (; kLoadsTriples && done + kPixels + kOverrun <= count; done += kPixels)
            Store(dst + 4 * done, Or(LoadPixels<Vector>(src + 3 * done, 3), opaque));
        Bgr24ToBgra32Row(dst + 4 * done, src + 3 * done, count - done);
    }

    /// dst = combination(s1, s2) for whole vectors of pixels. Returns the number of pixels done.
    template <typename Combination>
    static int ByPixels(const BlendRows& rows, const Combination& combination)
    {
        const auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows; // a copy, which no store can alias
        const bool hasTriples = dstStep == 3 || s1Step == 3 || s2Step == 3;
        if (hasTriples && !kLoadsTriples)
            return 0;

        int done = 0;
        if (hasTriples)
            for (; done + kPixels + kOverrun <= count; done += kPixels)
                StoreColors(dst + dstStep * done, dstStep,
                            combination(LoadPixels<Vector>(s1 + s1Step * done, s1Step),
                                        LoadPixels<Vector>(s2 + s2Step * done, s2Step)));
        else
            for (; done + kPixels <= count; done += kPixels)
                StoreColors(dst + 4 * done, 4,
                            combination(Load<Vector>(s1 + 4 * done), Load<Vector>(s2 + 4 * done)));
        return done;
    }

    /// The same for a combination that treats every byte by itself.
    template <typename Combination>
    static int ByBytes(const BlendRows& rows, const Combination& combination)
    {
        const auto [dst, dstStep, s1, s1Step, s2, s2Step, count] = rows; // a copy, which no store can alias
        if (dstStep != 3 || s1Step != 3 || s2Step != 3)
            return ByPixels(rows, combination);

        // As many pixels as a vector has bytes are three whole vectors.
        int done = 0;
        for (; done + kBytes <= count; done += kBytes)
            for (int i = 3 * done; i < 3 * (done + kBytes); i += kBytes)
                Store(dst + i, combination(Load<Vector>(s1 + i), Load<Vector>(s2 + i)));
        return done;
    }

private:
    // Loading a vector of 3-byte pixels touches bytes of this many more pixels.
    static constexpr int kOverrun = 2;

    template <int kTaps>
    static void HorizontalPixels(float* out, const unsigned char* src, const TapSet* columns, int count,
                                 int channels)
    {
        for (int i = 0; i < count; ++i, out += channels)
        {
            const auto& [offsets, coefficients] = columns[i];
            Floats sum = PixelAsFloats(src + offsets[0]) * coefficients[0];
            for (int k = 1; k < kTaps; ++k)
                sum += PixelAsFloats(src + offsets[k]) * coefficients[k];
            StoreFloats(out, sum);
        }
    }
};

template <typename Vector>
constexpr KernelTable VectorTable(decltype(&ShadeRow) shadeRow, std::int64_t shadeTablePixels)
{
    using Rows = VectorRows<Vector>;
    return {.horizontalRow = Rows::Horizontal,
            .verticalRow = Rows::Vertical,
            .fixUpCubicPixels = Rows::FixUpCubic,
            .horizontalFixedRow = Rows::HorizontalFixed,
            .verticalFixedRow = VerticalFixedWords,
            .filter141Row = Filter141Words,
            .scaleColumnsRow = Rows::ScaleColumns,
            .blendRowByAlpha = Rows::BlendByAlpha,
            .blendRow = Rows::Blend,
            .keyRow = Rows::Key,
            .shadeRow = shadeRow,
            .multiplyRow = Rows::Multiply,
            .setAlphaRow = Rows::SetAlpha,
            .fillAlphaRow = Rows::FillAlpha,
            .keyAlphaRow = Rows::KeyAlpha,
            .lerpToColorRow = Rows::LerpToColor,
            .bgr24ToBgra32Row = Rows::Bgr24ToBgra32,
            .shadeTablePixels = shadeTablePixels};
}

} // namespace

} // namespace zel
