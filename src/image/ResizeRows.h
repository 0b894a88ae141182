#pragma once

#include "image/Resize.h"
#include "kernels/Kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

/// What the paths of Resize share.
namespace zel
{

/// `columns`, rounded up to whole groups.
constexpr int WholeGroups(int columns)
{
    return (columns + kGroup - 1) / kGroup * kGroup;
}

/// The latest source rows after the horizontal pass. Rows that are used together are neighbours, so each has
/// the slot of its number modulo `kSlots`.
template <typename Value, int kSlots>
class RollingBuffer
{
public:
    explicit RollingBuffer(std::size_t rowLength)
        : m_rowLength(rowLength), m_values(std::make_unique_for_overwrite<Value[]>(kSlots * rowLength))
    {
        Clear();
    }

    void Clear() { std::fill_n(m_rows, kSlots, -1); }

    /// The row of this number, made by makeRow(Value*, number) where it is not there yet.
    template <typename MakeRow>
    const Value* Row(int number, const MakeRow& makeRow)
    {
        const int slot = number % kSlots;
        Value* const row = m_values.get() + static_cast<std::size_t>(slot) * m_rowLength;
        if (m_rows[slot] != number)
            makeRow(row, number);
        m_rows[slot] = number;
        return row;
    }

private:
    int m_rows[kSlots]; ///< the number of the row in each slot, or -1
    std::size_t m_rowLength;
    std::unique_ptr<Value[]> m_values;
};

/// The tables of ColumnTaps for the columns of a result. A column reads neighbouring pixels, which all lie in
/// the row: where the definition repeats a pixel at an end, its neighbours get the weight 0, or the weights
/// of the repeated pixel are added up.
template <typename Weight>
class ColumnTable
{
public:
    /// indexOf(i, k) is the pixel of tap k in column i, clamped to the row; weightOf(i, k) is its weight.
    template <typename IndexOf, typename WeightOf>
    ColumnTable(const ResizeJob& job, int taps, const IndexOf& indexOf, const WeightOf& weightOf)
        : m_taps(taps),
          m_offsets(Tabulate(WholeGroups(job.to.Width()),
                             [&](int i)
                             {
                                 const int first = indexOf(std::min(i, job.to.Width() - 1), 0);
                                 return std::clamp(first, 0, std::max(job.from.Width() - taps, 0));
                             })),
          m_weights(std::make_unique<Weight[]>(static_cast<std::size_t>(WholeGroups(job.to.Width())) *
                                               static_cast<std::size_t>(taps)))
    {
        for (int i = 0; i < WholeGroups(job.to.Width()); ++i)
            for (int k = 0; k < taps; ++k)
            {
                const int column = std::min(i, job.to.Width() - 1);
                const int place = indexOf(column, k) - m_offsets.get()[i];
                m_weights.get()[(std::ptrdiff_t{i} / kGroup * taps + place) * kGroup + i % kGroup] +=
                    weightOf(column, k);
            }
        for (int i = 0; i < WholeGroups(job.to.Width()); i += kGroup)
            m_span = std::max(m_span, m_offsets.get()[i + kGroup - 1] - m_offsets.get()[i]);
        const bool isWide = job.from.Width() > std::numeric_limits<int>::max() / 4; // offsets are int
        m_step = m_span < ActiveKernels().nearSpan && !isWide ? 4 : job.from.PixelSize();
        for (int i = 0; i < WholeGroups(job.to.Width()); ++i)
            m_offsets.get()[i] *= m_step;
    }

    /// Bytes per pixel of the rows that the columns are to read.
    int Step() const { return m_step; }

    /// The first pixel that the columns from this one on read, and the one after the last up to it.
    int FirstPixel(int column) const { return m_offsets.get()[column] / m_step; }
    int EndPixel(int column) const { return FirstPixel(column) + m_taps; }

    ColumnTaps<Weight> From(int column) const
    {
        return {m_offsets.get() + column, m_weights.get() + std::ptrdiff_t{column} * m_taps, m_step,
                m_span * m_step};
    }

private:
    int m_taps;
    std::unique_ptr<int[]> m_offsets;
    std::unique_ptr<Weight[]> m_weights;
    int m_span = 0;
    int m_step;
};

/// Source rows that are followed by kRowSlack bytes of memory, and are widened to `step` bytes per pixel.
class SourceRows
{
public:
    SourceRows(const CTarvexDib& from, int step)
        : m_from(from), m_end(from.GetPixelFast(0, 0) + from.BytesPerScanLine()), m_step(step),
          m_row(std::make_unique<unsigned char[]>(
              static_cast<std::size_t>(step) * static_cast<std::size_t>(from.Width()) + kRowSlack))
    {
    }

    /// A row of which the pixels from `begin` up to `end` are there. The next call may overwrite it.
    const unsigned char* Row(int row, int begin, int end) const
    {
        const unsigned char* const src = m_from.GetPixelFast(begin, row);
        unsigned char* const copy = m_row.get() + std::ptrdiff_t{m_step} * begin;
        if (m_step != m_from.PixelSize())
            ActiveKernels().bgr24ToBgra32Row(copy, src, end - begin);
        else if (m_end - src < std::ptrdiff_t{m_step} * (end - begin) + kRowSlack)
            std::memcpy(copy, src, static_cast<std::size_t>(m_step) * static_cast<std::size_t>(end - begin));
        else
            return m_from.GetPixelFast(0, row);
        return m_row.get();
    }

private:
    const CTarvexDib& m_from;
    const unsigned char* m_end; ///< of the pixels in memory
    int m_step;
    std::unique_ptr<unsigned char[]> m_row;
};

/// Fills the target in two passes, along x and along y, strip by strip. `Method` has the type Value of the
/// sums along x, the most rows of them that it needs at a time, kRows, how many columns a strip has,
/// kStripColumns, and
/// - columns, a ColumnTable,
/// - valuesPerColumn, how many sums along x a column has,
/// - FilterRow(out, src, begin, groups), the pass along x, and
/// - FillRow(dst, row, begin, count, filteredRow), the pass along y.
template <typename Method>
void ResizeInTwoPasses(const ResizeJob& job, const Method& method)
{
    constexpr int kStripColumns = Method::kStripColumns;
    static_assert(kStripColumns % kGroup == 0);
    const int width = job.to.Width();
    const SourceRows source(job.from, method.columns.Step());
    RollingBuffer<typename Method::Value, Method::kRows> filtered(
        4 * static_cast<std::size_t>(std::min(kStripColumns, WholeGroups(width))));

    // The next row of the result reads about `pace` rows further. While columns that read 2 KB of a source
    // row are filtered, as much is loaded of the row that is to be filtered for the next row but one. Columns
    // that are farther apart than lines of the cache would not use most of that.
    constexpr double kBlockBytes = 2048.0, kLineBytes = 64.0;
    const double columnBytes = job.stepX * job.from.PixelSize();
    const int pace = std::max(1, static_cast<int>(job.stepY));
    const double blockColumns = std::clamp(kBlockBytes / columnBytes, 1.0, double{kStripColumns});
    const int block = WholeGroups(static_cast<int>(blockColumns));

    for (int begin = 0; begin < width; begin += kStripColumns)
    {
        const int count = std::min(width - begin, kStripColumns), stripEnd = begin + WholeGroups(count);
        const int firstPixel = method.columns.FirstPixel(begin);
        const int endPixel = std::min(method.columns.EndPixel(begin + count - 1), job.from.Width());
        const auto filter = [&](typename Method::Value* out, int row)
        {
            const unsigned char* const src = source.Row(row, firstPixel, endPixel);
            for (int i = begin; i < stripEnd; i += block)
            {
                const int columns = std::min(stripEnd - i, block), from = method.columns.FirstPixel(i);
                if (row - pace >= pace && columnBytes <= kLineBytes)
                    Prefetch(job.from.GetPixelFast(from, row - 2 * pace),
                             (method.columns.FirstPixel(i + columns - 1) - from) * job.from.PixelSize());
                method.FilterRow(out + (i - begin) * method.valuesPerColumn, src, i, columns / kGroup);
            }
        };
        filtered.Clear();
        for (int row = job.to.Height() - 1; row >= 0; --row) // the order of memory
            method.FillRow(job.to.GetPixelFast(begin, row), row, begin, count,
                           [&](int number) { return filtered.Row(number, filter); });
    }
}

} // namespace zel
