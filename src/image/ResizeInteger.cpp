#include "image/ResizeRows.h"

#include <bit>

// Bilinear and cubic in integers, at the scales where the weights are fractions of small integers.

namespace zel
{

namespace
{

struct LinearFixedPoint
{
    using Value = std::uint16_t;
    static constexpr int kRows = 2;
    static constexpr int kStripColumns = 2048; // 32 KiB of filtered rows

    LinearFixedPoint(const ResizeJob& resizeJob, const RationalScale& x, const RationalScale& y)
        : job(resizeJob), rows(y), divisor(x.denominator * y.denominator),
          columns(
              job, 2, [&](int i, int k) { return std::min(x.Index(i) + k, job.from.Width() - 1); },
              [&](int i, int k)
              {
                  const int second = x.Remainder(i), weight = k == 0 ? x.denominator - second : second;
                  return static_cast<std::uint32_t>(weight) * 0x10001U;
              })
    {
    }

    void FilterRow(std::uint16_t* out, const unsigned char* src, int begin, int groups) const
    {
        kernels.horizontalFixedRow(out, src, columns.From(begin), 2, groups);
    }

    template <typename FilteredRow>
    void FillRow(unsigned char* dst, int row, int, int count, const FilteredRow& filteredRow) const
    {
        const int index = rows.Index(row), weight = rows.Remainder(row);
        const std::uint16_t* const upper = filteredRow(index);
        const std::uint16_t* const lower =
            weight == 0 ? upper : filteredRow(std::min(index + 1, job.from.Height() - 1));
        kernels.verticalFixedRow(dst, job.to.PixelSize(), {upper, lower}, {rows.denominator - weight, weight},
                                 2, divisor, count, job.channels, nullptr);
    }

    const ResizeJob& job;
    const int valuesPerColumn = 4;
    RationalScale rows;
    InvariantDivisor divisor;
    ColumnTable<std::uint32_t> columns;
    const KernelTable& kernels = ActiveKernels();
};

// Where source / target is an integer on both axes, all weights of an axis are 1/6, 4/6 and 1/6. So a sum is
// a multiple of 1/36, and in integers it has no rounding error. The doubles err by much less than 1/36, so
// they round to the same byte, except where the sum is a multiple of 1/2: there the byte depends on their
// errors. Such a sum is computed again in doubles, in the defined order, with a table for its products.
struct CubicFixedPoint
{
    using Value = std::uint16_t;
    static constexpr int kRows = 3;
    static constexpr int kStripColumns = 2048;
    const int valuesPerColumn = 4;

    CubicFixedPoint(const ResizeJob& resizeJob, const RationalScale& x, const RationalScale& y)
        : job(resizeJob), stepX(x.numerator), stepY(y.numerator),
          columns(
              job, 3, [this](int i, int k) { return Neighbour(i * stepX, k, job.from.Width()); },
              [](int, int k) { return k == 1 ? 0x40004U : 0x10001U; })
    {
        const CubicTaps tap = MakeCubicTaps(0.0, 3, 1);
        for (int byte = 0; byte < 256; ++byte)
        {
            corners[byte] = byte * (tap.weight[0] * tap.weight[0]);
            sides[byte] = byte * (tap.weight[0] * tap.weight[1]);
            middle[byte] = byte * (tap.weight[1] * tap.weight[1]);
        }
    }

    static int Neighbour(int index, int k, int length) { return std::clamp(index - 1 + k, 0, length - 1); }

    void FilterRow(std::uint16_t* out, const unsigned char* src, int begin, int groups) const
    {
        kernels.horizontalFixedRow(out, src, columns.From(begin), 3, groups);
    }

    template <typename FilteredRow>
    void FillRow(unsigned char* dst, int row, int begin, int count, const FilteredRow& filteredRow) const
    {
        const std::uint16_t* filtered[3];
        const unsigned char* src[3];
        for (int k = 0; k < 3; ++k)
        {
            const int number = Neighbour(row * stepY, k, job.from.Height());
            filtered[k] = filteredRow(number);
            src[k] = job.from.GetPixelFast(0, number);
        }
        std::uint32_t ties[kStripColumns / kGroup];
        kernels.verticalFixedRow(dst, job.to.PixelSize(), filtered, {1, 4, 1}, 3, InvariantDivisor(36), count,
                                 job.channels, ties);
        int list[4 * kStripColumns + 1];
        const int found = ListBits(list, ties, count);
        for (int i = 0; i < found; ++i)
        {
            const int column = list[i] / 4, channel = list[i] % 4;
            dst[std::ptrdiff_t{job.to.PixelSize()} * column + channel] =
                DefinedByte(src, begin + column, channel);
        }
    }

    // The numbers of the bits that are set, of 32 bits a group of columns. Three bits of each group are taken
    // without branches, since nothing predicts how many it has.
    static int ListBits(int* list, const std::uint32_t* masks, int columnCount)
    {
        int found = 0;
        for (int first = 0; first < 4 * columnCount; first += 4 * kGroup)
        {
            std::uint32_t mask = *masks++;
            const auto take = [&]
            {
                list[found] = first + std::countr_zero(mask | 0x80000000U); // never of 0: that is a branch
                found += mask != 0;
                mask &= mask - 1;
            };
            take();
            take();
            take();
            while (mask != 0)
                take();
        }
        return found;
    }

    unsigned char DefinedByte(const unsigned char* const (&src)[3], int column, int channel) const
    {
        const std::ptrdiff_t step = job.from.PixelSize(), at = step * stepX * column + channel;
        const std::ptrdiff_t left = column == 0 ? at : at - step;
        const std::ptrdiff_t right = stepX * column == job.from.Width() - 1 ? at : at + step;
        const double above = 0.0 + corners[src[0][left]] + sides[src[0][at]] + corners[src[0][right]];
        const double here = above + sides[src[1][left]] + middle[src[1][at]] + sides[src[1][right]];
        const double sum = here + corners[src[2][left]] + sides[src[2][at]] + corners[src[2][right]];
        return static_cast<unsigned char>(sum + 0.5);
    }

    const ResizeJob& job;
    int stepX;
    int stepY;
    ColumnTable<std::uint32_t> columns;
    double corners[256], sides[256], middle[256]; // each byte, weighted as at these places of a sum
    const KernelTable& kernels = ActiveKernels();
};

} // namespace

void ResizeCubicFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    ResizeInTwoPasses(job, CubicFixedPoint(job, x, y));
}

void ResizeLinearFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    ResizeInTwoPasses(job, LinearFixedPoint(job, x, y));
}

} // namespace zel
