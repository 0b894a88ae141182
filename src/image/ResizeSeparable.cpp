#include "image/ResizeRows.h"

#include <bit>
#include <iterator>
#include <type_traits>

// Bilinear and cubic at any scale. Two float passes estimate each sum: each source row is filtered along x
// once, and the filtered rows are then added under the weights along y. If the estimate lies farther than the
// error bound from a rounding border, its byte is certain. The other pixels are computed again in doubles, as
// defined.
//
// The error bound, in units of u = 2^-17 = 256 * 2^-25. A float below 256 is rounded by at most 1 u, one from
// 256 to 512 by at most 2 u. Weights are positive and sum to 1, so that a relative error of 2^-24 in each
// weight, or in each product, changes a sum of bytes by at most 255 * 2^-24 < 2 u. With four taps (two err
// less):
//   along x, 8 u from the weights: each is rounded as it becomes a float, and, at the ends of a row, in up to
//              three additions;
//            2 u from the products (none where they are rounded together with the additions);
//            4 u from the additions;
//   along y, 2 u from the weights;
//            2 u from the products;
//            8 u from the additions, whose sums start at kVerticalBias and stay below 512.
// That is 26 u, or 6.5 units of VerticalRow. The doubles err by less than 2^-40, so a byte is certain if its
// sum is 7 units or more away from a border.

namespace zel
{

static_assert(kRoundingMargin >= 7);

namespace
{

// What the columns of a result read of a source row, as defined.
template <typename Taps>
struct Columns
{
    // makeTap(position, length, step) makes a tap as MakeLinearTaps and MakeCubicTaps do.
    template <typename MakeTap>
    Columns(const ResizeJob& job, const MakeTap& makeTap)
        : taps(Tabulate(job.to.Width(), [&](int i)
                        { return makeTap(i * job.stepX, job.from.Width(), job.from.PixelSize()); })),
          wideReadEnd(job.to.Width())
    {
        const int rowBytes = job.from.PixelSize() * job.from.Width();
        while (wideReadEnd > 0 && std::end(taps.get()[wideReadEnd - 1].offset)[-1] + 4 > rowBytes)
            --wideReadEnd;
    }

    std::unique_ptr<Taps[]> taps;
    int wideReadEnd; // from this column on, loading four bytes at a tap could leave the source row
};

// The weights of a position in floats.
void GetWeights(const LinearTaps& taps, float (&weights)[4])
{
    weights[0] = static_cast<float>(1.0 - taps.fraction);
    weights[1] = static_cast<float>(taps.fraction);
}

void GetWeights(const CubicTaps& taps, float (&weights)[4])
{
    for (int k = 0; k < 4; ++k)
        weights[k] = static_cast<float>(taps.weight[k]);
}

// The number of taps that have weights other than 0. At integer positions the last of a cubic has not.
int UsedTaps(const LinearTaps*, int)
{
    return 2;
}

int UsedTaps(const CubicTaps* taps, int count)
{
    return std::all_of(taps, taps + count, [](const CubicTaps& tap) { return tap.weight[3] == 0.0; }) ? 3 : 4;
}

template <typename Taps, Taps (*kMakeTaps)(double, int, int)>
struct Separable
{
    using Value = float;
    static constexpr int kRows = std::extent_v<decltype(Taps::offset)>;
    // Two filtered rows of a strip fit the first-level cache. Four do not, unless the strips are so narrow
    // that the processor's own prefetching never starts; so they are in the second-level cache.
    static constexpr int kStripColumns = kRows == 2 ? 512 : 2048;

    explicit Separable(const ResizeJob& resizeJob)
        : job(resizeJob), definition(job, kMakeTaps), taps(UsedTaps(definition.taps.get(), job.to.Width())),
          columns(
              job, taps,
              [&](int i, int k) { return definition.taps.get()[i].offset[k] / job.from.PixelSize(); },
              [&](int i, int k)
              {
                  float weights[4];
                  GetWeights(definition.taps.get()[i], weights);
                  return weights[k];
              }),
          rows(TabulateRows(job.to.Height(), 0.0, job.stepY,
                            [&](double y) { return kMakeTaps(y, job.from.Height(), 1); }))
    {
    }

    void FilterRow(float* out, const unsigned char* src, int begin, int groups) const
    {
        kernels.horizontalRow(out, src, columns.From(begin), taps, groups, job.channels);
    }

    template <typename FilteredRow>
    void FillRow(unsigned char* dst, int row, int begin, int count, const FilteredRow& filteredRow) const
    {
        const Taps& rowTap = rows.get()[row];
        const float* filtered[4] = {};
        const int rowTaps = UsedTaps(&rowTap, 1);
        for (int k = 0; k < rowTaps; ++k)
            filtered[k] = filteredRow(rowTap.offset[k]);
        float weights[4] = {};
        GetWeights(rowTap, weights);

        std::uint32_t ambiguous[kStripColumns / kGroup + 1];
        const int listed = kernels.verticalRow(dst, job.to.PixelSize(), filtered, weights, rowTaps, count,
                                               job.channels, ambiguous);
        int list[kStripColumns], found = 0;
        for (int i = 0; i < listed; ++i)
            for (std::uint32_t marks = ambiguous[i] & 255; marks != 0; marks &= marks - 1)
                list[found++] = static_cast<int>(ambiguous[i] >> 8) + std::countr_zero(marks);
        const auto defined = MakeDefinedRow(dst, job.to.PixelSize(), job.channels, job.from, rowTap,
                                            definition.taps.get() + begin, definition.wideReadEnd - begin);
        if constexpr (std::is_same_v<Taps, LinearTaps>)
            kernels.linearPixels(defined, list, found);
        else
            kernels.cubicPixels(defined, list, found);
    }

    const ResizeJob& job;
    const int valuesPerColumn = job.channels;
    Columns<Taps> definition;
    int taps;
    ColumnTable<float> columns;
    std::unique_ptr<Taps[]> rows;
    const KernelTable& kernels = ActiveKernels();
};

} // namespace

void ResizeLinearSeparable(const ResizeJob& job)
{
    ResizeInTwoPasses(job, Separable<LinearTaps, MakeLinearTaps>(job));
}

void ResizeCubicSeparable(const ResizeJob& job)
{
    ResizeInTwoPasses(job, Separable<CubicTaps, MakeCubicTaps>(job));
}

} // namespace zel
