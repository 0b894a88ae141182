#pragma once

#include "kernels/Kernels.h"

#include <cstring>
#include <utility>

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

template <typename Vector>
struct VectorRows
{
    static constexpr int kBytes = static_cast<int>(sizeof(Vector));
    static constexpr int kPixels = kBytes / 4; // of 4 bytes

    static void Horizontal(float* out, const unsigned char* src, const ColumnTaps<float>& columns, int taps,
                           int groups, int channels)
    {
        constexpr decltype(&HorizontalGroups<2, 3>) kRows[][2] = {
            {HorizontalGroups<2, 3>, HorizontalGroups<2, 4>},
            {HorizontalGroups<3, 3>, HorizontalGroups<3, 4>},
            {HorizontalGroups<4, 3>, HorizontalGroups<4, 4>}};
        kRows[taps - 2][channels - 3](out, src, columns, groups);
    }

    static int Vertical(unsigned char* dst, int dstStep, const float* const (&rows)[4],
                        const float (&weights)[4], int taps, int count, int channels,
                        std::uint32_t* ambiguous)
    {
        constexpr decltype(&VerticalGroups<2, 3>) kRows[][2] = {{VerticalGroups<2, 3>, VerticalGroups<2, 4>},
                                                                {VerticalGroups<3, 3>, VerticalGroups<3, 4>},
                                                                {VerticalGroups<4, 3>, VerticalGroups<4, 4>}};
        return kRows[taps - 2][channels - 3](dst, dstStep, rows, weights, count, ambiguous);
    }

    static void Linear(const DefinedRow<LinearTaps>& row, const int* list, int count)
    {
        const double fy = row.tap.fraction;
        Define(row, list, count, LinearPixels,
               [=, upper = row.src[0], lower = row.src[1]](Doubles& sum, const LinearTaps& tap)
               {
                   const double fx = tap.fraction, w11 = fx * fy;
                   AddProduct(sum, upper + tap.offset[0], SetDoubles(1.0 - fx - fy + w11));
                   AddProduct(sum, lower + tap.offset[1], SetDoubles(w11));
                   AddProduct(sum, lower + tap.offset[0], SetDoubles(fy - w11));
                   AddProduct(sum, upper + tap.offset[1], SetDoubles(fx - w11));
               });
    }

    static void Cubic(const DefinedRow<CubicTaps>& row, const int* list, int count)
    {
        const int rowCount = row.tap.weight[3] == 0.0 ? 3 : 4; // adding 0 changes no sum
        Doubles rowWeights[4];
        for (int j = 0; j < rowCount; ++j)
            rowWeights[j] = SetDoubles(row.tap.weight[j]);
        Define(row, list, count, CubicPixels,
               [&, src = row.src](Doubles& sum, const CubicTaps& tap)
               {
                   const int tapCount = tap.weight[3] == 0.0 ? 3 : 4;
                   for (int j = 0; j < rowCount; ++j)
                       for (int k = 0; k < tapCount; ++k)
                           AddProduct(sum, src[j] + tap.offset[k],
                                      Mul(rowWeights[j], SetDoubles(tap.weight[k])));
               });
    }

    static void HorizontalFixed(std::uint16_t* out, const unsigned char* src,
                                const ColumnTaps<std::uint32_t>& columns, int taps, int groups)
    {
        (taps == 2 ? HorizontalFixedGroups<2> : HorizontalFixedGroups<3>)(out, src, columns, groups);
    }

    static void VerticalFixed(unsigned char* dst, int dstStep, const std::uint16_t* const (&rows)[3],
                              const int (&weights)[3], int taps, const InvariantDivisor& divisor, int count,
                              int channels, std::uint32_t* ties)
    {
        (taps == 2 ? VerticalFixedGroups<2> : VerticalFixedGroups<3>)(dst, dstStep, rows, weights, divisor,
                                                                      count, channels, ties);
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
    // Writes the listed pixels of a row. addProducts(sum, tap) adds up what the definition does, as vectors
    // of the four bytes at each tap. Pixels at the end of the row go to `scalar`.
    template <typename Taps, typename AddProducts>
    static void Define(const DefinedRow<Taps>& row, const int* list, int count,
                       void (*scalar)(const DefinedRow<Taps>&, const int*, int),
                       const AddProducts& addProducts)
    {
        for (int i = 0; i < count; ++i)
        {
            if (list[i] >= row.wideReadEnd)
            {
                scalar(row, list + i, 1);
                continue;
            }
            Doubles sum = {};
            addProducts(sum, row.columns[list[i]]);
            StoreRounded(row.dst + std::ptrdiff_t{row.dstStep} * list[i], sum, row.channels);
        }
    }

    // Loading a vector of 3-byte pixels touches bytes of this many more pixels.
    static constexpr int kOverrun = 2;

    static void StorePixels(unsigned char* dst, int dstStep, int channels, Vector pixels)
    {
        if (channels == 4)
            Store(dst, pixels);
        else
            StoreColors(dst, dstStep, pixels);
    }

    static void StoreSomePixels(unsigned char* dst, int dstStep, int channels, Vector pixels, int count)
    {
        unsigned char bytes[kBytes];
        Store(bytes, pixels);
        for (int i = 0; i < count; ++i, dst += dstStep)
            std::memcpy(dst, bytes + 4 * i, channels == 4 ? 4 : 3);
    }

    template <int kTaps>
    static void HorizontalFixedGroups(std::uint16_t* out, const unsigned char* src,
                                      const ColumnTaps<std::uint32_t>& columns, int groups)
    {
        WithFetch(columns,
                  [=](const auto& fetch)
                  {
                      for (int i = 0; i < kGroup * groups; i += kPixels)
                      {
                          const std::uint32_t* const weights =
                              columns.weights + kTaps * (i - i % kGroup) + i % kGroup;
                          Vector pixels[kTaps], lower, upper;
                          fetch(pixels, src, columns.offsets + i);
                          PairSums(lower, upper, pixels[0], pixels[1], weights);
                          if constexpr (kTaps == 3)
                          {
                              const auto third = Load32<Vector>(weights + 2 * kGroup);
                              lower = AddWords(lower, MulWords(PromoteLower(pixels[2]), RepeatLower(third)));
                              upper = AddWords(upper, MulWords(PromoteUpper(pixels[2]), RepeatUpper(third)));
                          }
                          StoreWords(out + 4 * i, lower);
                          StoreWords(out + 4 * i + kBytes / 2, upper);
                      }
                  });
    }

    template <int kTaps>
    static void VerticalFixedGroups(unsigned char* dst, int dstStep, const std::uint16_t* const (&rows)[3],
                                    const int (&weights)[3], const InvariantDivisor& divisor, int count,
                                    int channels, std::uint32_t* ties)
    {
        const std::uint16_t* row[kTaps];
        Vector weight[kTaps];
        for (int k = 0; k < kTaps; ++k)
        {
            row[k] = rows[k];
            weight[k] = SetWords<Vector>(weights[k]);
        }
        const Vector half = SetWords<Vector>(divisor.value / 2), value = SetWords<Vector>(divisor.value),
                     multiplier = SetWords<Vector>(divisor.multiplier);
        const auto words = [&](int at, Vector& remainders)
        {
            Vector sum = half;
            for (int k = 0; k < kTaps; ++k)
                sum = AddWords(sum, MulWords(LoadWords<Vector>(row[k] + at), weight[k]));
            const Vector result = ShiftWordsRight(MulHigh(sum, multiplier), divisor.shift);
            remainders = SubtractWords(sum, MulWords(result, value));
            return result;
        };
        for (int i = 0; i < count; i += kPixels, dst += dstStep * kPixels)
        {
            Vector low, high;
            const Vector lower = words(4 * i, low), upper = words(4 * i + kBytes / 2, high);
            if (i + kPixels <= count)
                StorePixels(dst, dstStep, channels, Demote(lower, upper));
            else
                StoreSomePixels(dst, dstStep, channels, Demote(lower, upper), count - i);
            if constexpr (kTaps == 3)
            {
                std::uint32_t& mask = ties[i / kGroup];
                if (i % kGroup == 0)
                    mask = 0;
                mask |= ZeroBytes(Demote(low, high)) << (4 * (i % kGroup));
                if (channels == 3)
                    mask &= 0x77777777;
                if (count - i < kPixels)
                    mask &= (1U << (4 * (count - i + i % kGroup))) - 1;
            }
        }
    }

    template <int kTaps, int kChannels>
    static void HorizontalGroups(float* out, const unsigned char* src, const ColumnTaps<float>& columns,
                                 int groups)
    {
        WithFetch(columns,
                  [=](const auto& fetch)
                  {
                      const int* offsets = columns.offsets;
                      const float* weights = columns.weights;
                      float* sums = out;
                      for (int g = 0; g < groups; ++g, weights += kGroup * kTaps, sums += kGroup * kChannels)
                          for (int i = 0; i < kGroup; i += kPixels, offsets += kPixels)
                          {
                              Vector pixels[kTaps];
                              fetch(pixels, src, offsets);
                              HorizontalSums<kTaps>(sums + i, pixels, weights + i,
                                                    std::make_integer_sequence<int, kChannels>());
                          }
                  });
    }

    template <int kTaps, int... kChannel>
    static void HorizontalSums(float* sums, const Vector (&pixels)[kTaps], const float* weights,
                               std::integer_sequence<int, kChannel...>)
    {
        Floats sum[] = {Mul(ChannelAsFloats<kChannel>(pixels[0]), LoadFloats(weights))...};
        for (int k = 1; k < kTaps; ++k)
            ((sum[kChannel] = MulAdd(ChannelAsFloats<kChannel>(pixels[k]), LoadFloats(weights + kGroup * k),
                                     sum[kChannel])),
             ...);
        (StoreFloats(sums + kGroup * kChannel, sum[kChannel]), ...);
    }

    template <int kTaps, int kChannels>
    static int VerticalGroups(unsigned char* dst, int dstStep, const float* const (&rows)[4],
                              const float (&weights)[4], int count, std::uint32_t* ambiguous)
    {
        const float* row[kTaps];
        Floats weight[kTaps];
        for (int k = 0; k < kTaps; ++k)
        {
            row[k] = rows[k];
            weight[k] = SetFloats(weights[k]);
        }
        int listed = 0;
        for (int g = 0; g < count; g += kGroup)
        {
            std::uint32_t marks = 0;
            for (int i = 0; i < kGroup; i += kPixels)
            {
                Vector least;
                const Vector pixels = VerticalSums(row, kChannels * g + i, weight, least,
                                                   std::make_integer_sequence<int, kChannels>());
                if (g + i + kPixels <= count)
                    StorePixels(dst + dstStep * (g + i), dstStep, kChannels, pixels);
                else
                    StoreSomePixels(dst + dstStep * (g + i), dstStep, kChannels, pixels, count - g - i);
                marks |= static_cast<std::uint32_t>(MaskOfLess32(least, 2 * kRoundingMargin)) << i;
            }
            if (count - g < kGroup)
                marks &= (1U << (count - g)) - 1;
            ambiguous[listed] = static_cast<std::uint32_t>(g) << 8 | marks;
            listed += marks != 0;
        }
        return listed;
    }

    // Rounded pixels. The lowest fraction of each goes into `least`.
    template <int kTaps, int... kChannel>
    static Vector VerticalSums(const float* const (&rows)[kTaps], int at, const Floats (&weights)[kTaps],
                               Vector& least, std::integer_sequence<int, kChannel...>)
    {
        const Floats bias = SetFloats(kVerticalBias);
        const Vector fraction = Set<Vector>(32767);
        const auto sum = [&](int c)
        {
            Floats result = bias;
            for (int k = 0; k < kTaps; ++k)
                result = MulAdd(LoadFloats(rows[k] + at + kGroup * c), weights[k], result);
            return BitsOf(result);
        };
        const Vector sums[] = {sum(kChannel)...};
        least = And(sums[0], fraction);
        ((least = MinWords(least, And(sums[kChannel], fraction))), ...);
        Vector pixels = Set<Vector>(0);
        ((pixels = Or(pixels, And(ShiftRight<15 - 8 * kChannel>(sums[kChannel]),
                                  Set<Vector>(255U << (8 * kChannel))))),
         ...);
        return pixels;
    }
};

template <typename Vector>
constexpr KernelTable VectorTable(decltype(&ShadeRow) shadeRow, std::int64_t shadeTablePixels)
{
    using Rows = VectorRows<Vector>;
    return {.nearSpan = kNearSpan,
            .horizontalRow = Rows::Horizontal,
            .verticalRow = Rows::Vertical,
            .linearPixels = Rows::Linear,
            .cubicPixels = Rows::Cubic,
            .horizontalFixedRow = Rows::HorizontalFixed,
            .verticalFixedRow = Rows::VerticalFixed,
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
