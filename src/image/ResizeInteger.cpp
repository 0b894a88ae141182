#include "image/ResizeRows.h"

// Bilinear in integers, at the scales where the weights are fractions of small integers.

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
        kernels.horizontalFixedRow(out, src, columns.From(begin), groups);
    }

    template <typename FilteredRow>
    void FillRow(unsigned char* dst, int row, int, int count, const FilteredRow& filteredRow) const
    {
        const int index = rows.Index(row), weight = rows.Remainder(row);
        const std::uint16_t* const upper = filteredRow(index);
        const std::uint16_t* const lower =
            weight == 0 ? upper : filteredRow(std::min(index + 1, job.from.Height() - 1));
        kernels.verticalFixedRow(dst, job.to.PixelSize(), upper, lower, rows.denominator - weight, weight,
                                 divisor, count, job.channels);
    }

    const ResizeJob& job;
    const int valuesPerColumn = 4;
    RationalScale rows;
    InvariantDivisor divisor;
    ColumnTable<std::uint32_t> columns;
    const KernelTable& kernels = ActiveKernels();
};

} // namespace

void ResizeLinearFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    ResizeInTwoPasses(job, LinearFixedPoint(job, x, y));
}

} // namespace zel
