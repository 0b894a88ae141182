#include "ResizeRoads.h"

#include "image/Kernels.h"

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
// taking whole steps adds one: 13 of the 16 that count as undecided. The doubles' own errors are nothing
// beside that.
static_assert(kUndecidedSteps >= 14);

// Columns are taken in strips whose filtered rows stay in the processor's first cache.
constexpr int kStripColumns = 384;

FilterTap MakeFilterTap(const LinearTap& tap)
{
    return {{tap.offset[0], tap.offset[1], 0, 0},
            {static_cast<float>(1.0 - tap.fraction), static_cast<float>(tap.fraction), 0.0F, 0.0F}};
}

FilterTap MakeFilterTap(const CubicTap& tap)
{
    FilterTap result;
    for (int k = 0; k < 4; ++k)
    {
        result.offset[k] = tap.offset[k];
        result.weight[k] = static_cast<float>(tap.weight[k]);
    }
    return result;
}

// The pixels of a row that `list` names, as they are defined.
void ExactPixels(unsigned char* dst, int dstStep, const CTarvexDib& from, const LinearTap* columns,
                 const LinearTap& row, const int* list, int count, int, int channels)
{
    for (int i = 0; i < count; ++i)
        LinearRow(dst + std::ptrdiff_t{dstStep} * list[i], dstStep, from.GetPixelFast(0, row.offset[0]),
                  from.GetPixelFast(0, row.offset[1]), row.fraction, columns + list[i], 1, channels);
}

void ExactPixels(unsigned char* dst, int dstStep, const CTarvexDib& from, const CubicTap* columns,
                 const CubicTap& row, const int* list, int count, int within, int channels)
{
    const unsigned char* const rows[4] = {
        from.GetPixelFast(0, row.offset[0]), from.GetPixelFast(0, row.offset[1]),
        from.GetPixelFast(0, row.offset[2]), from.GetPixelFast(0, row.offset[3])};
    ActiveKernels().cubicPixels(dst, dstStep, rows, row.weight, columns, list, count, within, channels);
}

// Columns with a marked byte; gives how many. Marks are 0 or 1, and the seven behind them may be written
// over, as may the place in `list` behind the last column found.
int MarkedColumns(int* list, unsigned char* marks, int columns, int channels)
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
void SpreadTriples(unsigned char* dst, const unsigned char* triples, int count)
{
    for (int i = 0; i < count; ++i, dst += 4, triples += 3)
        std::memcpy(dst, triples, 3);
}

// `makeTap` makes a Tap, of `taps` pixels, as of Kernels.h.
template <typename Tap>
void ResizeBySums(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels,
                  int taps, Tap (*makeTap)(double position, int length, int step))
{
    const int width = to.Width(), height = to.Height();
    const auto columns =
        ColumnTable(width, [&](int i) { return makeTap(i * stepX, from.Width(), from.PixelSize()); });
    const auto filterColumns = ColumnTable(width, [&](int i) { return MakeFilterTap(columns.get()[i]); });
    double y = 0.0; // as defined, by repeated addition from the top
    const auto positions = ColumnTable(height, [&](int row) { return row == 0 ? y : y += stepY; });
    constexpr std::size_t kStripFloats = 4 * kStripColumns + 1; // one to be written over
    const auto filtered = std::make_unique_for_overwrite<float[]>(4 * kStripFloats);
    unsigned char sums[4 * kStripColumns], undecided[4 * kStripColumns + 7];
    int list[kStripColumns + 1];

    const int within = ColumnsWithinRow(filterColumns.get(), taps, width, from.PixelSize() * from.Width());
    const Kernels& kernels = ActiveKernels();
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
            const FilterTap weights = MakeFilterTap(rowTap);
            const float* rows[4] = {};
            for (int k = 0; k < taps; ++k)
            {
                const int index = rowTap.offset[k], place = index % 4;
                float* const floats = filtered.get() + static_cast<std::size_t>(place) * kStripFloats;
                if (held[place] != index)
                    kernels.filterRow(floats, from.GetPixelFast(0, index), filterColumns.get() + begin, taps,
                                      count, stripWithin, channels);
                held[place] = index;
                rows[k] = floats;
            }

            unsigned char* const dst = to.GetPixelFast(begin, row);
            kernels.addRows(direct ? dst : sums, undecided, rows, weights.weight, taps,
                            std::ptrdiff_t{channels} * count);
            if (!direct)
                SpreadTriples(dst, sums, count);
            const int marked = MarkedColumns(list, undecided, count, channels);
            ExactPixels(dst, to.PixelSize(), from, columns.get() + begin, rowTap, list, marked, stripWithin,
                        channels);
        }
    }
}

// The positions along one axis as fractions of whole numbers: number i lies at i * numerator / denominator.
struct WholeSteps
{
    WholeSteps(int to, int from) : numerator(from / std::gcd(to, from)), denominator(to / std::gcd(to, from))
    {
    }

    int Index(int i) const { return static_cast<int>(std::int64_t{i} * numerator / denominator); }
    int Rest(int i) const { return static_cast<int>(std::int64_t{i} * numerator % denominator); }

    int numerator;
    int denominator;
};

// Whether a bilinear result can be found in whole numbers, as a sum of bytes over the product of both
// denominators. Over an odd number the quotient keeps off the border between two bytes by 1 / 254 at least:
// more than the doubles err by, which is 255 times the error of a position, below 2^-22 on such lengths. Over
// a power of two the doubles are exact, borders included.
bool IsWhole(const WholeSteps& x, const WholeSteps& y, const CTarvexDib& to, const CTarvexDib& from)
{
    constexpr int kLongest = 32768;
    if (std::max({to.Width(), to.Height(), from.Width(), from.Height()}) > kLongest)
        return false;
    const std::int64_t product = std::int64_t{x.denominator} * y.denominator;
    return product <= 127 && (product % 2 == 1 || std::has_single_bit(static_cast<std::uint64_t>(product)));
}

// All positions are those of pixels.
void ResizeByPixels(const CTarvexDib& to, const CTarvexDib& from, const WholeSteps& x, const WholeSteps& y,
                    int channels)
{
    const auto columns = ColumnTable(to.Width(), [&](int i) { return x.Index(i) * from.PixelSize(); });
    const auto rows = ColumnTable(to.Height(), [&](int row) { return y.Index(row); });
    GatherRows(to, from, columns.get(), rows.get(), channels, false);
}

void ResizeByWholeWeights(const CTarvexDib& to, const CTarvexDib& from, const WholeSteps& x,
                          const WholeSteps& y, int channels)
{
    constexpr std::size_t kSurplus = 8; // words that a row may write behind its own

    const int width = to.Width(), step = from.PixelSize();
    const auto offsets = ColumnTable(width, [&](int i) { return x.Index(i) * step; });
    const auto weights = ColumnTable(2 * width,
                                     [&](int i)
                                     {
                                         const int second = x.Rest(i / 2);
                                         const int weight = i % 2 == 0 ? x.denominator - second : second;
                                         return static_cast<unsigned char>(weight);
                                     });
    PairColumns columns = {offsets.get(), weights.get(), step, width, width};
    while (columns.pairs > 0 && offsets.get()[columns.pairs - 1] == (from.Width() - 1) * step)
        --columns.pairs;
    columns.whole = columns.pairs;
    while (columns.whole > 0 && offsets.get()[columns.whole - 1] + 8 > from.Width() * step)
        --columns.whole;

    const SmallDivisor divisor(x.denominator * y.denominator);
    const auto count = static_cast<std::size_t>(channels) * static_cast<std::size_t>(width);
    const auto words = std::make_unique_for_overwrite<std::uint16_t[]>(2 * (count + kSurplus));
    const bool direct = channels == to.PixelSize();
    const auto bytes = std::make_unique_for_overwrite<unsigned char[]>(direct ? 0 : count);

    // Two neighbours at a time, each in the place that its number gives. From the bottom row up, the order of
    // memory.
    const Kernels& kernels = ActiveKernels();
    int held[2] = {-1, -1};
    const auto sumsOf = [&](int row)
    {
        std::uint16_t* const sums = words.get() + static_cast<std::size_t>(row % 2) * (count + kSurplus);
        if (held[row % 2] != row)
            kernels.pairRow(sums, from.GetPixelFast(0, row), columns, width, channels);
        held[row % 2] = row;
        return sums;
    };
    for (int row = to.Height() - 1; row >= 0; --row)
    {
        const int index = y.Index(row), weight = y.Rest(row);
        const std::uint16_t* const upper = sumsOf(index);
        const std::uint16_t* const lower =
            weight == 0 ? upper : sumsOf(std::min(index + 1, from.Height() - 1));
        unsigned char* const dst = to.GetPixelFast(0, row);
        kernels.addPairRows(direct ? dst : bytes.get(), upper, lower, y.denominator - weight, weight, divisor,
                            static_cast<std::ptrdiff_t>(count));
        if (!direct)
            SpreadTriples(dst, bytes.get(), width);
    }
}

// Cubic where both steps are whole numbers, `wholeX` and `wholeY`: sums of nine pixels, whole numbers
// over 36. A sum that is not on the border between two bytes keeps off it by 1 / 36, more than the doubles
// err by. One on the border is theirs, like the pixels at both ends of a row, which have no neighbours to
// read.
void ResizeBySixths(const CTarvexDib& to, const CTarvexDib& from, int wholeX, int wholeY, int channels)
{
    const int width = to.Width(), pixelSize = from.PixelSize(), step = wholeX * pixelSize;
    const auto columns = ColumnTable(
        width, [&](int i) { return MakeCubicTap(i * static_cast<double>(wholeX), from.Width(), pixelSize); });
    const int within = ColumnsWithinRow(columns.get(), 4, width, pixelSize * from.Width());
    const int stripColumns = std::min(kStripColumns, (kSixthsBytes - 2 * pixelSize) / step);
    unsigned char sums[4 * kStripColumns], undecided[4 * kStripColumns + 7];
    int list[kStripColumns + 1];

    const Kernels& kernels = ActiveKernels();
    const bool direct = channels == to.PixelSize();
    for (int row = to.Height() - 1; row >= 0; --row)
    {
        const CubicTap rowTap = MakeCubicTap(row * static_cast<double>(wholeY), from.Height(), 1);
        const int ends[] = {0, width - 1};
        ExactPixels(to.GetPixelFast(0, row), to.PixelSize(), from, columns.get(), rowTap, ends, 2, within,
                    channels);
        for (int begin = 1; begin < width - 1; begin += stripColumns)
        {
            const int count = std::min(width - 1 - begin, stripColumns);
            const int left = begin * wholeX - 1;
            const unsigned char* const rows[3] = {from.GetPixelFast(left, rowTap.offset[0]),
                                                  from.GetPixelFast(left, rowTap.offset[1]),
                                                  from.GetPixelFast(left, rowTap.offset[2])};
            unsigned char* const dst = to.GetPixelFast(begin, row);
            kernels.sixthsRow(direct ? dst : sums, undecided, rows, step, pixelSize, count, channels);
            if (!direct)
                SpreadTriples(dst, sums, count);
            const int marked = MarkedColumns(list, undecided, count, channels);
            ExactPixels(dst, to.PixelSize(), from, columns.get() + begin, rowTap, list, marked,
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

void GatherRows(const CTarvexDib& to, const CTarvexDib& from, const int* columns, const int* rows,
                int channels, bool opaque)
{
    const Kernels& kernels = ActiveKernels();
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
            kernels.gatherRow(dst, to.PixelSize(), src, columns, to.Width(), channels);
        if (hasAlpha && opaque)
            kernels.fillAlphaRow(dst, 255, to.Width());
    }
}

void ResizeNearest(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    const auto columns =
        ColumnTable(to.Width(), [&](int i) { return NearestTap(i * stepX, from.Width(), from.PixelSize()); });

    double y = 0.0;
    const auto rows = ColumnTable(to.Height(),
                                  [&](int row)
                                  {
                                      y += row == 0 ? 0.0 : stepY;
                                      return NearestTap(y, from.Height(), 1);
                                  });
    GatherRows(to, from, columns.get(), rows.get(), channels, false);
}

void ResizeLinear(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    const WholeSteps x(to.Width(), from.Width()), y(to.Height(), from.Height());
    if (!IsWhole(x, y, to, from))
        return ResizeBySums(to, from, stepX, stepY, channels, 2, MakeLinearTap);
    if (x.denominator == 1 && y.denominator == 1)
        return ResizeByPixels(to, from, x, y, channels);
    ResizeByWholeWeights(to, from, x, y, channels);
}

void ResizeCubic(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels)
{
    constexpr int kLargestWhole = 16; // beyond, SixthsRow reads too much that it does not need
    const WholeSteps x(to.Width(), from.Width()), y(to.Height(), from.Height());
    if (x.denominator == 1 && y.denominator == 1 && x.numerator <= kLargestWhole)
        return ResizeBySixths(to, from, x.numerator, y.numerator, channels);
    ResizeBySums(to, from, stepX, stepY, channels, 4, MakeCubicTap);
}

} // namespace zel
