#pragma once

#include "kernels/Kernels.h"
#include "kernels/Portable-inl.h"

/// The rows of Kernels.h for one instruction set. `Vector` names its vector of bytes and what can be done
/// with it; a source file for each instruction set provides that, and gives all its names internal linkage,
/// so that no code for the one ever runs on behalf of the other.
///
/// Whole vectors are done here, the rest of a row and steps that are mixed by the plain rows.
namespace zel
{

namespace
{

template <typename Vector>
struct VectorRows
{
    static constexpr int kBytes = static_cast<int>(sizeof(Vector));
    static constexpr int kPixels = kBytes / 4; // of 4 bytes

    static void Filter(float* out, const unsigned char* src, const TapSet* columns, int taps, int count,
                       int within, int channels)
    {
        (taps == 2 ? FilterPixels<2> : FilterPixels<4>)(out, src, columns, within, channels);
        HorizontalRow(out + std::ptrdiff_t{channels} * within, src, columns + within, taps, count - within, 0,
                      channels);
    }

    static void Add(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                    const float (&weights)[4], int taps, std::ptrdiff_t count)
    {
        const std::ptrdiff_t done = taps == 4 ? AddSteps(out, ambiguous, rows, weights, count) : 0;
        const float* const rest[4] = {rows[0] + done, rows[1] + done, rows[2] + done, rows[3] + done};
        VerticalFloatRow(out + done, ambiguous + done, rest, weights, taps, count - done);
    }

    static void Cubic(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
                      const double (&rowWeights)[4], const CubicTap* columns, const int* list, int count,
                      int within, int channels)
    {
        const int rowCount = rowWeights[3] == 0.0 ? 3 : 4; // adding nothing changes no sum
        for (int i = 0; i < count; ++i)
        {
            unsigned char* const to = dst + std::ptrdiff_t{dstStep} * list[i];
            const CubicTap& tap = columns[list[i]];
            if (list[i] >= within)
            {
                CubicRow(to, dstStep, rows, rowWeights, &tap, 1, channels);
                continue;
            }
            const int tapCount = tap.weight[3] == 0.0 ? 3 : 4;
            Doubles sum = {};
            for (int j = 0; j < rowCount; ++j)
                for (int k = 0; k < tapCount; ++k)
                    AddProduct(sum, rows[j] + tap.offset[k], rowWeights[j] * tap.weight[k]);
            StoreRounded(to, sum, channels);
        }
    }

    static void Pair(std::uint16_t* out, const unsigned char* src, const FixedTaps& columns, int count,
                     int channels)
    {
        const int done = HorizontalFixedPixels(out, src, columns, channels);
        const FixedTaps rest = {columns.offsets + done, columns.weights + 2 * done, columns.step,
                                columns.pairs - done, 0};
        HorizontalFixedRow(out + std::ptrdiff_t{channels} * done, src, rest, count - done, channels);
    }

    static void BlendByAlpha(unsigned char* dst, int dstStep, const unsigned char* s1,
                             const unsigned char* s2, int s2Step, int count)
    {
        const int done = ByPixels(dst, dstStep, s1, 4, s2, s2Step, count,
                                  [](Vector first, Vector second) { return LerpByAlpha(first, second); });
        BlendRowByAlpha(dst + dstStep * done, dstStep, s1 + 4 * done, s2 + s2Step * done, s2Step,
                        count - done);
    }

    static void Blend(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                      const unsigned char* s2, int s2Step, int alpha, int count)
    {
        const Vector weight = WeightOf<Vector>(alpha);
        const int done = alpha == 0 ? ByBytes(dst, dstStep, s1, s1Step, s2, s2Step, count,
                                              [](Vector first, Vector) { return first; })
                                    : ByBytes(dst, dstStep, s1, s1Step, s2, s2Step, count,
                                              [weight](Vector first, Vector second)
                                              { return Lerp(second, first, weight); });
        BlendRow(dst + dstStep * done, dstStep, s1 + s1Step * done, s1Step, s2 + s2Step * done, s2Step, alpha,
                 count - done);
    }

    static void Multiply(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                         const unsigned char* s2, int s2Step, int count)
    {
        const int done =
            ByBytes(dst, dstStep, s1, s1Step, s2, s2Step, count,
                    [](Vector first, Vector second)
                    {
                        return Demote(MulHigh(PromoteLowerTimes256(first), PromoteLower(second)),
                                      MulHigh(PromoteUpperTimes256(first), PromoteUpper(second)));
                    });
        MultiplyRow(dst + dstStep * done, dstStep, s1 + s1Step * done, s1Step, s2 + s2Step * done, s2Step,
                    count - done);
    }

    static void Key(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                    const unsigned char* s2, int s2Step, const unsigned char (&key)[3], int count)
    {
        const Vector colors = Set<Vector>(0x00FFFFFF);
        const Vector wanted = Set<Vector>(static_cast<std::uint32_t>(key[0] | key[1] << 8 | key[2] << 16));
        const int done = ByPixels(dst, dstStep, s1, s1Step, s2, s2Step, count,
                                  [=](Vector first, Vector second)
                                  { return IfThenElse(Equal32(And(first, colors), wanted), second, first); });
        KeyRow(dst + dstStep * done, dstStep, s1 + s1Step * done, s1Step, s2 + s2Step * done, s2Step, key,
               count - done);
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

    static void Mix(unsigned char* dst, const int (&color)[3], int weight, int count)
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
            const Vector mixed = weight == 256 ? target : Lerp(target, pixels, share);
            Store(dst + 4 * done, IfThenElse(colors, mixed, pixels));
        }
        LerpToColorRow(dst + 4 * done, color, weight, count - done);
    }

    static void Gather(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets,
                       int count, int channels)
    {
        const int done = dstStep == channels ? ScaleColumnsShuffle(dst, src, offsets, count, channels) : 0;
        if (done < count)
            ScaleColumnsRow(dst + dstStep * done, dstStep, src, offsets + done, count - done, channels);
    }

    static void ExpandTriple(unsigned char* dst, const unsigned char* src, int count)
    {
        const Vector opaque = Set<Vector>(0xFF000000);
        int done = 0;
        for (; kReadsTriples && done + kPixels + kBehind <= count; done += kPixels)
            Store(dst + 4 * done, Or(LoadPixels<Vector>(src + 3 * done, 3), opaque));
        Bgr24ToBgra32Row(dst + 4 * done, src + 3 * done, count - done);
    }

    /// Colours of dst = combination(s1, s2) for whole vectors of pixels. Gives how many.
    template <typename Combination>
    static int ByPixels(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                        const unsigned char* s2, int s2Step, int count, const Combination& combination)
    {
        const bool hasTriples = dstStep == 3 || s1Step == 3 || s2Step == 3;
        if (hasTriples && !kReadsTriples)
            return 0;

        int done = 0;
        if (hasTriples)
            for (; done + kPixels + kBehind <= count; done += kPixels)
                StoreColors(dst + dstStep * done, dstStep,
                            combination(LoadPixels<Vector>(s1 + s1Step * done, s1Step),
                                        LoadPixels<Vector>(s2 + s2Step * done, s2Step)));
        else
            for (; done + kPixels <= count; done += kPixels)
                StoreColors(dst + 4 * done, 4,
                            combination(Load<Vector>(s1 + 4 * done), Load<Vector>(s2 + 4 * done)));
        return done;
    }

    /// The same for a combination of bytes that have nothing to do with their neighbours.
    template <typename Combination>
    static int ByBytes(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                       const unsigned char* s2, int s2Step, int count, const Combination& combination)
    {
        if (dstStep != 3 || s1Step != 3 || s2Step != 3)
            return ByPixels(dst, dstStep, s1, s1Step, s2, s2Step, count, combination);

        // As many pixels as a vector has bytes are three whole vectors.
        int done = 0;
        for (; done + kBytes <= count; done += kBytes)
            for (int i = 3 * done; i < 3 * (done + kBytes); i += kBytes)
                Store(dst + i, combination(Load<Vector>(s1 + i), Load<Vector>(s2 + i)));
        return done;
    }

private:
    static constexpr int kBehind = 2; // pixels of 3 bytes that loading a vector of them touches besides

    template <int kTaps>
    static void FilterPixels(float* out, const unsigned char* src, const TapSet* columns, int count,
                             int channels)
    {
        for (int i = 0; i < count; ++i, out += channels)
        {
            const TapSet& tap = columns[i];
            Floats sum = PixelAsFloats(src + tap.offset[0]) * tap.weight[0];
            for (int k = 1; k < kTaps; ++k)
                sum += PixelAsFloats(src + tap.offset[k]) * tap.weight[k];
            StoreFloats(out, sum);
        }
    }
};

template <typename Vector>
constexpr KernelTable VectorTable(decltype(&ShadeRow) shadeRow)
{
    using Rows = VectorRows<Vector>;
    return {Rows::Filter,       Rows::Add,          Rows::Cubic,     Rows::Pair,     VerticalFixedWords,
            Filter141Words,     Rows::BlendByAlpha, Rows::Blend,     Rows::Key,      shadeRow,
            Rows::Multiply,     Rows::SetAlpha,     Rows::FillAlpha, Rows::KeyAlpha, Rows::Mix,
            Rows::ExpandTriple, Rows::Gather};
}

} // namespace

} // namespace zel
