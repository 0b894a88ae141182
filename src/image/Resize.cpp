#include "image/Resize.h"

#include "kernels/Kernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>

namespace zel
{

namespace
{

// Bilinear and cubic are sums of products in doubles, defined pixel by pixel. Nearly every byte of a result
// is found at a fraction of that cost: each source row is filtered along x into floats once, the rows that a
// pixel's row takes are added up, and where the sum lies farther from the border between two bytes than all
// errors together can be, the byte is decided. The others are computed as defined.
//
// The errors, in units of 255 * 2^-24, twice what the rounding of a float below 1 makes of a byte: a pass
// over n pixels has n / 2 from the weights, 1 from the products, as the weights add up to 1, and n - 1 from
// the additions; 6 for four pixels, 12 for two passes. 12 units are less than 12 steps of 1 / 65536, and
// taking whole steps adds one: 13 of the 16 that count as ambiguous. The doubles' own errors are nothing
// beside that.
static_assert(kRoundingMargin >= 14);

// Columns are taken in strips whose filtered rows stay in the processor's first cache.
constexpr int kStripColumns = 384;

TapSet MakeTapSet(const LinearTap& tap)
{
    return {{tap.offset[0], tap.offset[1], 0, 0},
            {static_cast<float>(1.0 - tap.fraction), static_cast<float>(tap.fraction), 0.0F, 0.0F}};
}

TapSet MakeTapSet(const CubicTap& tap)
{
    TapSet result;
    for (int k = 0; k < 4; ++k)
    {
        result.offset[k] = tap.offset[k];
        result.weight[k] = static_cast<float>(tap.weight[k]);
    }
    return result;
}

// The pixels of a row that `list` names, as they are defined.
void FixUpPixels(unsigned char* dst, int dstStep, const CTarvexDib& from, const LinearTap* columns,
                 const LinearTap& row, const int* list, int count, int, int channels)
{
    for (int i = 0; i < count; ++i)
        LinearRow(dst + std::ptrdiff_t{dstStep} * list[i], dstStep, from.GetPixelFast(0, row.offset[0]),
                  from.GetPixelFast(0, row.offset[1]), row.fraction, columns + list[i], 1, channels);
}

void FixUpPixels(unsigned char* dst, int dstStep, const CTarvexDib& from, const CubicTap* columns,
                 const CubicTap& row, const int* list, int count, int within, int channels)
{
    const unsigned char* const rows[4] = {
        from.GetPixelFast(0, row.offset[0]), from.GetPixelFast(0, row.offset[1]),
        from.GetPixelFast(0, row.offset[2]), from.GetPixelFast(0, row.offset[3])};
    ActiveKernels().fixUpCubicPixels(dst, dstStep, rows, row.weight, columns, list, count, within, channels);
}

// Columns with a marked byte; gives how many. Marks are 0 or 1, and the seven behind them may be written
// over, as may the place in `list` behind the last column found.
int AmbiguousColumns(int* list, unsigned char* marks, int columns, int channels)
{
    const int bytes = channels * columns;
    std::memset(marks + bytes, 0, 7);
    int count = 0, last = -1;
    for (int at = 0; at < bytes; at += 8)
    {
        std::uint64_t eight;
        std::memcpy(&eight, marks + at, sizeof eight);
        for (; eight != 0; eight &= eight - 1)
        {
            const int byte = at + std::countr_zero(eight) / 8;
            const int column = channels == 3 ? byte / 3 : byte / 4;
            list[count] = column;
            count += column != last;
            last = column;
        }
    }
    return count;
}

// How many columns, from the left, read no byte behind the row when each pixel is read as four bytes.
template <typename Tap>
int ColumnsWithinRow(const Tap* columns, int taps, int count, int rowBytes)
{
    while (count > 0 && columns[count - 1].offset[taps - 1] + 4 > rowBytes)
        --count;
    return count;
}

// The colours of 4-byte pixels.
void StoreBgrKeepAlpha(unsigned char* dst, const unsigned char* triples, int count)
{
    for (int i = 0; i < count; ++i, dst += 4, triples += 3)
        std::memcpy(dst, triples, 3);
}

// `makeTap` makes a Tap, of `taps` pixels, as of Kernels.h.
template <typename Tap>
void ResizeSeparable(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels,
                     int taps, Tap (*makeTap)(double position, int length, int step))
{
    const int width = to.Width(), height = to.Height();
    const auto columns =
        Tabulate(width, [&](int i) { return makeTap(i * stepX, from.Width(), from.PixelSize()); });
    const auto tapSets = Tabulate(width, [&](int i) { return MakeTapSet(columns.get()[i]); });
    double y = 0.0; // as defined, by repeated addition from the top
    const auto positions = Tabulate(height, [&](int row) { return row == 0 ? y : y += stepY; });
    constexpr std::size_t kStripFloats = 4 * kStripColumns + 1; // one to be written over
    const auto filtered = std::make_unique_for_overwrite<float[]>(4 * kStripFloats);
    unsigned char sums[4 * kStripColumns], ambiguous[4 * kStripColumns + 7];
    int list[kStripColumns + 1];

    const int within = ColumnsWithinRow(tapSets.get(), taps, width, from.PixelSize() * from.Width());
    const KernelTable& kernels = ActiveKernels();
    const bool direct = channels == to.PixelSize();
    for (int begin = 0; begin < width; begin += kStripColumns)
    {
        const int count = std::min(width - begin, kStripColumns);
        const int stripWithin = std::clamp(within - begin, 0, count);

        // The rows taken together are neighbours, so that each finds its place by its number. From the bottom
        // row up, the order of memory.
        int held[4] = {-1, -1, -1, -1};
        for (int row = height - 1; row >= 0; --row)
        {
            const Tap rowTap = makeTap(positions.get()[row], from.Height(), 1);
            const TapSet weights = MakeTapSet(rowTap);
            const float* rows[4] = {};
            for (int k = 0; k < taps; ++k)
            {
                const int index = rowTap.offset[k], place = index % 4;
                float* const floats = filtered.get() + static_cast<std::size_t>(place) * kStripFloats;
                if (held[place] != index)
                    kernels.horizontalRow(floats, from.GetPixelFast(0, index), tapSets.get() + begin, taps,
                                          count, stripWithin, channels);
                held[place] = index;
                rows[k] = floats;
            }

            unsigned char* const dst = to.GetPixelFast(begin, row);
            kernels.verticalRow(direct ? dst : sums, ambiguous, rows, weights.weight, taps,
                                std::ptrdiff_t{channels} * count);
            if (!direct)
                StoreBgrKeepAlpha(dst, sums, count);
            const int marked = AmbiguousColumns(list, ambiguous, count, channels);
            FixUpPixels(dst, to.PixelSize(), from, columns.get() + begin, rowTap, list, marked, stripWithin,
                        channels);
        }
    }
}

// The positions along one axis as fractions of whole numbers: number i lies at i * numerator / denominator.
struct RationalScale
{
    RationalScale(int to, int from)
        : numerator(from / std::gcd(to, from)), denominator(to / std::gcd(to, from))
    {
    }

    int Index(int i) const { return static_cast<int>(std::int64_t{i} * numerator / denominator); }
    int Remainder(int i) const { return static_cast<int>(std::int64_t{i} * numerator % denominator); }

    int numerator;
    int denominator;
};

// Whether a bilinear result can be found in whole numbers, as a sum of bytes over the product of both
// denominators. Over an odd number the quotient keeps off the border between two bytes by 1 / 254 at least:
// more than the doubles err by, which is 255 times the error of a position, below 2^-22 on such lengths. Over
// a power of two the doubles are exact, borders included.
bool FitsFixedPoint(const RationalScale& x, const RationalScale& y, const CTarvexDib& to,
                    const CTarvexDib& from)
{
    constexpr int kLongest = 32768;
    if (std::max({to.Width(), to.Height(), from.Width(), from.Height()}) > kLongest)
        return false;
    const std::int64_t product = std::int64_t{x.denominator} * y.denominator;
    return product <= 127 && (product % 2 == 1 || std::has_single_bit(static_cast<std::uint64_t>(product)));
}

// All positions are those of pixels.
void ResizeDecimate(const CTarvexDib& to, const CTarvexDib& from, const RationalScale& x,
                    const RationalScale& y, int channels)
{
    const auto columns = Tabulate(to.Width(), [&](int i) { return x.Index(i) * from.PixelSize(); });
    const auto rows = Tabulate(to.Height(), [&](int row) { return y.Index(row); });
    ScaleRows(to, from, columns.get(), rows.get(), channels, false);
}

void ResizeLinearFixedPoint(const CTarvexDib& to, const CTarvexDib& from, const RationalScale& x,
                            const RationalScale& y, int channels)
{
    constexpr std::size_t kSurplus = 8; // words that a row may write behind its own

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
    while (columns.pairs > 0 && offsets.get()[columns.pairs - 1] == (from.Width() - 1) * step)
        --columns.pairs;
    columns.whole = columns.pairs;
    while (columns.whole > 0 && offsets.get()[columns.whole - 1] + 8 > from.Width() * step)
        --columns.whole;

    const InvariantDivisor divisor(x.denominator * y.denominator);
    const auto count = static_cast<std::size_t>(channels) * static_cast<std::size_t>(width);
    const auto words = std::make_unique_for_overwrite<std::uint16_t[]>(2 * (count + kSurplus));
    const bool direct = channels == to.PixelSize();
    const auto bytes = std::make_unique_for_overwrite<unsigned char[]>(direct ? 0 : count);

    // Two neighbours at a time, each in the place that its number gives. From the bottom row up, the order of
    // memory.
    const KernelTable& kernels = ActiveKernels();
    int held[2] = {-1, -1};
    const auto sumsOf = [&](int row)
    {
        std::uint16_t* const sums = words.get() + static_cast<std::size_t>(row % 2) * (count + kSurplus);
        if (held[row % 2] != row)
            kernels.horizontalFixedRow(sums, from.GetPixelFast(0, row), columns, width, channels);
        held[row % 2] = row;
        return sums;
    };
    for (int row = to.Height() - 1; row >= 0; --row)
    {
        const int index = y.Index(row), weight = y.Remainder(row);
        const std::uint16_t* const upper = sumsOf(index);
        const std::uint16_t* const lower =
            weight == 0 ? upper : sumsOf(std::min(index + 1, from.Height() - 1));
        unsigned char* const dst = to.GetPixelFast(0, row);
        kernels.verticalFixedRow(direct ? dst : bytes.get(), upper, lower, y.denominator - weight, weight,
                                 divisor, static_cast<std::ptrdiff_t>(count));
        if (!direct)
            StoreBgrKeepAlpha(dst, bytes.get(), width);
    }
}

// Cubic where both steps are whole numbers, `wholeX` and `wholeY`: sums of nine pixels, whole numbers
// over 36. A sum that is not on the border between two bytes keeps off it by 1 / 36, more than the doubles
// err by. One on the border is theirs, like the pixels at both ends of a row, which have no neighbours to
// read.
void ResizeCubicInteger(const CTarvexDib& to, const CTarvexDib& from, int wholeX, int wholeY, int channels)
{
    const int width = to.Width(), pixelSize = from.PixelSize(), step = wholeX * pixelSize;
    const auto columns = Tabulate(
        width, [&](int i) { return MakeCubicTap(i * static_cast<double>(wholeX), from.Width(), pixelSize); });
    const int within = ColumnsWithinRow(columns.get(), 4, width, pixelSize * from.Width());
    const int stripColumns = std::min(kStripColumns, (kFilter141Bytes - 2 * pixelSize) / step);
    unsigned char sums[4 * kStripColumns], ambiguous[4 * kStripColumns + 7];
    int list[kStripColumns + 1];

    const KernelTable& kernels = ActiveKernels();
    const bool direct = channels == to.PixelSize();
    for (int row = to.Height() - 1; row >= 0; --row)
    {
        const CubicTap rowTap = MakeCubicTap(row * static_cast<double>(wholeY), from.Height(), 1);
        const int ends[] = {0, width - 1};
        FixUpPixels(to.GetPixelFast(0, row), to.PixelSize(), from, columns.get(), rowTap, ends, 2, within,
                    channels);
        for (int begin = 1; begin < width - 1; begin += stripColumns)
        {
            const int count = std::min(width - 1 - begin, stripColumns);
            const int left = begin * wholeX - 1;
            const unsigned char* const rows[3] = {from.GetPixelFast(left, rowTap.offset[0]),
                                                  from.GetPixelFast(left, rowTap.offset[1]),
                                                  from.GetPixelFast(left, rowTap.offset[2])};
            unsigned char* const dst = to.GetPixelFast(begin, row);
            kernels.filter141Row(direct ? dst : sums, ambiguous, rows, step, pixelSize, count, channels);
            if (!direct)
                StoreBgrKeepAlpha(dst, sums, count);
            const int marked = AmbiguousColumns(list, ambiguous, count, channels);
            FixUpPixels(dst, to.PixelSize(), from, columns.get() + begin, rowTap, list, marked,
                        within - begin, channels);
        }
    }
}

bool AreNeighbours(const int* offsets, int count, int step)
{
    for (int i = 1; i < count; ++i)
        if (offsets[i] != offsets[0] + i * step)
            return false;
    return true;
}

} // namespace

void ScaleRows(const CTarvexDib& to, const CTarvexDib& from, const int* columns, const int* rows,
               int channels, bool opaque)
{
    const KernelTable& kernels = ActiveKernels();
    const bool hasAlpha = channels < to.PixelSize();
    const bool copies = !hasAlpha || opaque;
    const bool isRun =
        channels == from.PixelSize() && !hasAlpha && AreNeighbours(columns, to.Width(), channels);
    const auto rowBytes = static_cast<std::size_t>(to.PixelSize()) * static_cast<std::size_t>(to.Width());
    for (int row = to.Height() - 1; row >= 0; --row)
    {
        unsigned char* const dst = to.GetPixelFast(0, row);
        if (copies && row + 1 < to.Height() && rows[row] == rows[row + 1])
        {
            std::memcpy(dst, to.GetPixelFast(0, row + 1), rowBytes);
            continue;
        }
        const unsigned char* const src = from.GetPixelFast(0, rows[row]);
        if (isRun)
            std::memcpy(dst, src + columns[0], rowBytes);
        else
            kernels.scaleColumnsRow(dst, to.PixelSize(), src, columns, to.Width(), channels);
        if (hasAlpha && opaque)
            kernels.fillAlphaRow(dst, 255, to.Width());
    }
}

void ResizeNearest(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    const auto columns =
        Tabulate(to.Width(), [&](int i) { return NearestTap(i * stepX, from.Width(), from.PixelSize()); });

    double y = 0.0;
    const auto rows = Tabulate(to.Height(),
                               [&](int row)
                               {
                                   y += row == 0 ? 0.0 : stepY;
                                   return NearestTap(y, from.Height(), 1);
                               });
    ScaleRows(to, from, columns.get(), rows.get(), channels, false);
}

void ResizeLinear(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    const RationalScale x(to.Width(), from.Width()), y(to.Height(), from.Height());
    if (!FitsFixedPoint(x, y, to, from))
        return ResizeSeparable(to, from, stepX, stepY, channels, 2, MakeLinearTap);
    if (x.denominator == 1 && y.denominator == 1)
        return ResizeDecimate(to, from, x, y, channels);
    ResizeLinearFixedPoint(to, from, x, y, channels);
}

void ResizeCubic(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    constexpr int kLargestWhole = 16; // beyond, Filter141Row reads too much that it does not need
    const RationalScale x(to.Width(), from.Width()), y(to.Height(), from.Height());
    if (x.denominator == 1 && y.denominator == 1 && x.numerator <= kLargestWhole)
        return ResizeCubicInteger(to, from, x.numerator, y.numerator, channels);
    ResizeSeparable(to, from, stepX, stepY, channels, 4, MakeCubicTap);
}

} // namespace zel
