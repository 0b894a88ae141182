#include "image/ResizeRows.h"

// Bilinear and cubic in integers, at the scales where their weights are fractions of small integers.

namespace zel
{

void ResizeLinearFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    constexpr std::size_t kSurplus = 8; // words that a row may write after its own

    const CTarvexDib &to = job.to, &from = job.from;
    const int width = to.Width(), step = from.PixelSize();
    const auto offsets = Tabulate(width, [&](int i) { return x.Index(i) * step; });
    const auto weights = Tabulate(2 * width,
                                  [&](int i)
                                  {
                                      const int second = x.Remainder(i / 2);
                                      const int weight = i % 2 == 0 ? x.denominator - second : second;
                                      return static_cast<unsigned char>(weight);
                                  });
    FixedTaps columns = {offsets.get(), weights.get(), step, width, width};
    while (columns.interiorEnd > 0 && offsets.get()[columns.interiorEnd - 1] == (from.Width() - 1) * step)
        --columns.interiorEnd;
    columns.wideReadEnd = columns.interiorEnd;
    while (columns.wideReadEnd > 0 && offsets.get()[columns.wideReadEnd - 1] + 8 > from.Width() * step)
        --columns.wideReadEnd;

    const InvariantDivisor divisor(x.denominator * y.denominator);
    const auto count = static_cast<std::size_t>(job.channels) * static_cast<std::size_t>(width);
    RollingBuffer<std::uint16_t, 2> filtered(count + kSurplus);
    const bool isDirect = job.channels == to.PixelSize();
    const auto bytes = std::make_unique_for_overwrite<unsigned char[]>(isDirect ? 0 : count);

    const KernelTable& kernels = ActiveKernels();
    const auto filteredRow = [&](int row)
    {
        return filtered.Row(
            row, [&](std::uint16_t* out)
            { kernels.horizontalFixedRow(out, from.GetPixelFast(0, row), columns, width, job.channels); });
    };
    for (int row = to.Height() - 1; row >= 0; --row) // the order of memory
    {
        const int index = y.Index(row), weight = y.Remainder(row);
        const std::uint16_t* const upper = filteredRow(index);
        const std::uint16_t* const lower =
            weight == 0 ? upper : filteredRow(std::min(index + 1, from.Height() - 1));
        unsigned char* const dst = to.GetPixelFast(0, row);
        kernels.verticalFixedRow(isDirect ? dst : bytes.get(), upper, lower, y.denominator - weight, weight,
                                 divisor, static_cast<std::ptrdiff_t>(count));
        if (!isDirect)
            StoreBgrKeepAlpha(dst, bytes.get(), width);
    }
}

// At integer steps the cubic weights are (1, 4, 1) / 6, so a sum is an integer over 36. One that is not on a
// rounding border is at least 1 / 36 away from it, far more than the doubles err. One on the border is
// computed in doubles, whose rounding errors decide it; so are the pixels at both ends of a row, whose
// neighbours are clamped.
void ResizeCubicInteger(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    const CTarvexDib &to = job.to, &from = job.from;
    const int width = to.Width(), pixelSize = from.PixelSize(), step = x.numerator * pixelSize;
    const Columns<CubicTaps> columns(job, MakeCubicTaps);
    const int stripColumns = std::min(kStripColumns, (kFilter141Bytes - 2 * pixelSize) / step);
    EstimatedStrip strip(job);

    const KernelTable& kernels = ActiveKernels();
    for (int row = to.Height() - 1; row >= 0; --row) // the order of memory
    {
        const CubicTaps rowTap = MakeCubicTaps(row * static_cast<double>(y.numerator), from.Height(), 1);
        const auto fixUp = [&](int begin, const int* list, int count)
        { kernels.fixUpCubicPixels(MakeCubicFixUp(job, columns, begin, row, rowTap), list, count); };
        const int ends[] = {0, width - 1};
        fixUp(0, ends, 2);
        for (int begin = 1; begin < width - 1; begin += stripColumns)
        {
            const int count = std::min(width - 1 - begin, stripColumns);
            const int left = begin * x.numerator - 1;
            const unsigned char* const rows[3] = {from.GetPixelFast(left, rowTap.offset[0]),
                                                  from.GetPixelFast(left, rowTap.offset[1]),
                                                  from.GetPixelFast(left, rowTap.offset[2])};
            strip.Fill(
                to.GetPixelFast(begin, row), count,
                [&](unsigned char* out, unsigned char* ambiguous)
                { kernels.filter141Row(out, ambiguous, rows, step, pixelSize, count, job.channels); },
                [&](const int* list, int listed) { fixUp(begin, list, listed); });
        }
    }
}

} // namespace zel
