#include "image/Resize.h"

#include "kernels/Kernels.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>

// Which path Resize takes, and why its bytes are those that the sums of doubles in TarvexDib.h define.
//
// - Nearest: ScaleRows. It copies pixels.
// - Bilinear, no side longer than 32768, source / target an integer on both axes: ResizeDecimate. Every
//   weight is 0 or 1, so it copies pixels.
// - Bilinear, no side longer than 32768, the product of both denominators at most 127 and odd or a power of
//   two: ResizeLinearFixedPoint. Sums of integers are exact, and FitsFixedPoint proves that the doubles round
//   to the same byte.
// - Cubic, source / target an integer on both axes: ResizeCubicFixedPoint. Integers again; exact halves are
//   computed again in doubles.
// - All others: ResizeLinearSeparable and ResizeCubicSeparable. Two float passes with a proven error bound;
//   what lies within the bound of a rounding border is computed again in doubles.
//
// Both kinds of passes run in ResizeInTwoPasses: first along x, then along y.

namespace zel
{

namespace
{

// Whether ResizeLinearFixedPoint gives the defined bytes. It weights with integers over the product of both
// denominators, so its value n / product has no rounding error. A rounding border is k + 1/2.
// - Product odd: n / product is at least 1 / (2 * 127) away from a border, and the doubles err by far less.
//   Their largest error is that of a y position: at most 32768 additions, each of which rounds by at most
//   2^-39 (half an ulp of a number below 32768), err by 2^-24. An x position errs less. A value changes by at
//   most 255 per unit of position on each axis, so that it errs by less than 2 * 255 * 2^-24 < 1 / 32768. A
//   position that slips below an integer does no harm, since bilinear interpolation is continuous there.
// - Product a power of two: steps, positions, weights and sums are exact in doubles, borders included.
bool FitsFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    constexpr int kLongest = 32768;
    if (std::max({job.to.Width(), job.to.Height(), job.from.Width(), job.from.Height()}) > kLongest)
        return false;
    const std::int64_t product = std::int64_t{x.denominator} * y.denominator;
    return product <= 127 && (product % 2 == 1 || std::has_single_bit(static_cast<std::uint64_t>(product)));
}

bool IsInteger(const RationalScale& x, const RationalScale& y)
{
    return x.denominator == 1 && y.denominator == 1;
}

void ResizeDecimate(const ResizeJob& job, const RationalScale& x, const RationalScale& y)
{
    const auto columns =
        Tabulate(job.to.Width(), [&](int i) { return i * x.numerator * job.from.PixelSize(); });
    const auto rows = Tabulate(job.to.Height(), [&](int row) { return row * y.numerator; });
    ScaleRows(job.to, job.from, columns.get(), rows.get(), job.channels, false);
}

// Whether each offset is the one before plus `step`, so that the pixels are a run of bytes.
bool IsRun(const int* offsets, int count, int step)
{
    for (int i = 1; i < count; ++i)
        if (offsets[i] != offsets[0] + i * step)
            return false;
    return true;
}

} // namespace

RationalScale::RationalScale(int to, int from)
    : numerator(from / std::gcd(to, from)), denominator(to / std::gcd(to, from))
{
}

int RationalScale::Index(int i) const
{
    return static_cast<int>(std::int64_t{i} * numerator / denominator);
}

int RationalScale::Remainder(int i) const
{
    return static_cast<int>(std::int64_t{i} * numerator % denominator);
}

void ResizeNearest(const ResizeJob& job)
{
    const CTarvexDib& from = job.from;
    const auto columns = Tabulate(job.to.Width(), [&](int i)
                                  { return NearestOffset(i * job.stepX, from.Width(), from.PixelSize()); });
    const auto rows = TabulateRows(job.to.Height(), 0.0, job.stepY,
                                   [&](double y) { return NearestOffset(y, from.Height(), 1); });
    ScaleRows(job.to, from, columns.get(), rows.get(), job.channels, false);
}

void ResizeLinear(const ResizeJob& job)
{
    const RationalScale x(job.to.Width(), job.from.Width()), y(job.to.Height(), job.from.Height());
    if (!FitsFixedPoint(job, x, y))
        return ResizeLinearSeparable(job);
    if (IsInteger(x, y))
        return ResizeDecimate(job, x, y);
    ResizeLinearFixedPoint(job, x, y);
}

void ResizeCubic(const ResizeJob& job)
{
    const RationalScale x(job.to.Width(), job.from.Width()), y(job.to.Height(), job.from.Height());
    if (IsInteger(x, y))
        return ResizeCubicFixedPoint(job, x, y);
    ResizeCubicSeparable(job);
}

void ScaleRows(const CTarvexDib& to, const CTarvexDib& from, const int* columns, const int* rows,
               int channels, bool opaque)
{
    const KernelTable& kernels = ActiveKernels();
    const bool keepsAlpha = channels < to.PixelSize() && !opaque;
    const bool setsAlpha = channels < to.PixelSize() && opaque;
    const bool isRun =
        channels == from.PixelSize() && channels == to.PixelSize() && IsRun(columns, to.Width(), channels);
    const auto rowBytes = static_cast<std::size_t>(to.PixelSize()) * static_cast<std::size_t>(to.Width());
    for (int row = to.Height() - 1; row >= 0; --row) // the order of memory
    {
        unsigned char* const dst = to.GetPixelFast(0, row);
        if (!keepsAlpha && row + 1 < to.Height() && rows[row] == rows[row + 1])
        {
            std::memcpy(dst, to.GetPixelFast(0, row + 1), rowBytes);
            continue;
        }
        const unsigned char* const src = from.GetPixelFast(0, rows[row]);
        if (row > 0 && rows[row - 1] + 1 < rows[row])
            Prefetch(from.GetPixelFast(0, rows[row - 1]), from.Width() * from.PixelSize());
        if (isRun)
            std::memcpy(dst, src + columns[0], rowBytes);
        else
            kernels.scaleColumnsRow(dst, to.PixelSize(), src, columns, to.Width(), channels);
        if (setsAlpha)
            kernels.fillAlphaRow(dst, 255, to.Width());
    }
}

} // namespace zel
