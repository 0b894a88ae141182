#pragma once

#include "ZelUtil/TarvexDib.h"
#include "kernels/Kernels.h"

#include <cstddef>
#include <iterator>
#include <memory>

/// The paths of CTarvexDib::Resize. Resize.cpp tells which is taken, and why.
namespace zel
{

/// One call of Resize. Both images have pixels, and 24 or 32 bits.
struct ResizeJob
{
    const CTarvexDib& to;
    const CTarvexDib& from;
    int channels; ///< bytes that are written per pixel: 3 or 4, and no more than either image has
    double stepX; ///< distance of neighbouring pixels of `to`, measured in pixels of `from`
    double stepY;
};

/// \name Methods
/// Each fills all pixels of the target. If the tables cannot be allocated, it throws std::bad_alloc before it
/// writes a pixel.
/// @{
void ResizeNearest(const ResizeJob& job);
void ResizeLinear(const ResizeJob& job);
void ResizeCubic(const ResizeJob& job);
/// @}

/// The positions along an axis as fractions of integers: position i is i * numerator / denominator.
struct RationalScale
{
    RationalScale(int to, int from);

    int Index(int i) const;     ///< the integer part of position i
    int Remainder(int i) const; ///< what is left, in units of 1 / denominator

    int numerator;
    int denominator;
};

/// \name Paths
/// Called by the methods, when the scales admit them.
/// @{

/// Any scale.
void ResizeLinearSeparable(const ResizeJob& job);
void ResizeCubicSeparable(const ResizeJob& job);

/// Scales for which FitsFixedPoint in Resize.cpp holds, other than integers on both axes.
void ResizeLinearFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y);

/// Scales that are integers on both axes.
void ResizeCubicFixedPoint(const ResizeJob& job, const RationalScale& x, const RationalScale& y);

/// @}

/// Fills `to` with pixels of `from`: the pixel in column i and row r is the `channels` bytes at the byte
/// offset columns[i] in picture row rows[r]. Where `to` has alpha and `from` has none, alpha stays, or
/// becomes 255 when `opaque`.
void ScaleRows(const CTarvexDib& to, const CTarvexDib& from, const int* columns, const int* rows,
               int channels, bool opaque);

/// A row for LinearPixels or CubicPixels: `tap` is that of the row, with row numbers of `from` as offsets.
template <typename Taps>
DefinedRow<Taps> MakeDefinedRow(unsigned char* dst, int dstStep, int channels, const CTarvexDib& from,
                                const Taps& tap, const Taps* columns, int wideReadEnd)
{
    DefinedRow<Taps> row = {dst, dstStep, channels, {}, tap, columns, wideReadEnd};
    for (std::size_t k = 0; k < std::size(tap.offset); ++k)
        row.src[k] = from.GetPixelFast(0, tap.offset[k]);
    return row;
}

/// Loads bytes into the caches ahead of their use. Processors do so themselves as long as rows follow each
/// other in memory.
inline void Prefetch(const unsigned char* bytes, int count)
{
    constexpr int kLineBytes = 64;
    for (int i = 0; i < count; i += kLineBytes)
        __builtin_prefetch(bytes + i);
}

/// A table of valueOf(0) to valueOf(count - 1). Throws std::bad_alloc if memory runs out, also
/// where the size overflows on a 32-bit system.
template <typename ValueOf>
auto Tabulate(int count, const ValueOf& valueOf)
{
    using Value = decltype(valueOf(0));
    auto table = std::make_unique_for_overwrite<Value[]>(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        table.get()[i] = valueOf(i);
    return table;
}

/// A table of valueOf(y) for each of `count` rows, from the top. The positions y are defined by repeated
/// addition, so they are computed in this order even where the rows are used in another.
template <typename ValueOf>
auto TabulateRows(int count, double top, double step, const ValueOf& valueOf)
{
    double y = top;
    return Tabulate(count,
                    [&](int row)
                    {
                        y += row == 0 ? 0.0 : step;
                        return valueOf(y);
                    });
}

} // namespace zel
