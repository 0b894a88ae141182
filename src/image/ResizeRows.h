#pragma once

#include "image/Resize.h"
#include "kernels/Kernels.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

/// What the paths of Resize share.
namespace zel
{

/// Columns are taken in strips, so that the filtered source rows of a strip stay in the first-level cache.
inline constexpr int kStripColumns = 384;

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

    /// The row of this number, made by makeRow(Value*) where it is not there yet.
    template <typename MakeRow>
    const Value* Row(int number, const MakeRow& makeRow)
    {
        const int slot = number % kSlots;
        Value* const row = m_values.get() + static_cast<std::size_t>(slot) * m_rowLength;
        if (m_rows[slot] != number)
            makeRow(row);
        m_rows[slot] = number;
        return row;
    }

private:
    int m_rows[kSlots]; ///< the number of the row in each slot, or -1
    std::size_t m_rowLength;
    std::unique_ptr<Value[]> m_values;
};

/// Stores pixels of 3 bytes as the blue, green, red of pixels of 4 bytes, whose alpha stays.
inline void StoreBgrKeepAlpha(unsigned char* dst, const unsigned char* bgr, int count)
{
    for (int i = 0; i < count; ++i, dst += 4, bgr += 3)
        std::memcpy(dst, bgr, 3);
}

/// What the columns of a result read of a source row.
template <typename Taps>
struct Columns
{
    /// makeTap(position, length, step) makes a tap as MakeLinearTaps and MakeCubicTaps do.
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
    int wideReadEnd; ///< from this column on, loading four bytes at a tap could leave the source row
};

/// Part of a row of the result: an estimate writes all pixels and marks those that it cannot decide, which
/// are then computed in doubles, as defined.
class EstimatedStrip
{
public:
    explicit EstimatedStrip(const ResizeJob& job)
        : m_channels(job.channels), m_isDirect(job.channels == job.to.PixelSize())
    {
    }

    /// Fills `columns` pixels, at most kStripColumns, from dst on. estimate(out, ambiguous) writes `channels`
    /// bytes per pixel and a mark, 0 or 1, for each. fixUp(list, count) computes the listed columns.
    template <typename Estimate, typename FixUp>
    void Fill(unsigned char* dst, int columns, const Estimate& estimate, const FixUp& fixUp)
    {
        estimate(m_isDirect ? dst : m_bytes, m_ambiguous);
        if (!m_isDirect)
            StoreBgrKeepAlpha(dst, m_bytes, columns);
        const int count = ListAmbiguous(columns);
        fixUp(m_list, count);
    }

private:
    // Lists the columns with a marked byte and returns their count. Eight marks are looked at together; the
    // last eight may reach past the strip.
    int ListAmbiguous(int columns)
    {
        const int bytes = m_channels * columns;
        std::memset(m_ambiguous + bytes, 0, 7);
        int count = 0, last = -1;
        for (int at = 0; at < bytes; at += 8)
        {
            std::uint64_t eight;
            std::memcpy(&eight, m_ambiguous + at, sizeof eight);
            for (; eight != 0; eight &= eight - 1)
            {
                const int byte = at + std::countr_zero(eight) / 8;
                const int column = m_channels == 3 ? byte / 3 : byte / 4;
                m_list[count] = column;
                count += column != last;
                last = column;
            }
        }
        return count;
    }

    int m_channels;
    bool m_isDirect; ///< whether the estimate has the target's pixel size and goes there at once
    unsigned char m_bytes[4 * kStripColumns];
    unsigned char m_ambiguous[4 * kStripColumns + 7];
    int m_list[kStripColumns + 1]; ///< the entry after the last column may be written
};

/// The pixels from column `begin` of row `row` on, for FixUpCubicPixels.
inline CubicFixUp MakeCubicFixUp(const ResizeJob& job, const Columns<CubicTaps>& columns, int begin, int row,
                                 const CubicTaps& rowTap)
{
    CubicFixUp result = {job.to.GetPixelFast(begin, row), job.to.PixelSize(),          {},          {},
                         columns.taps.get() + begin,      columns.wideReadEnd - begin, job.channels};
    for (int k = 0; k < 4; ++k)
    {
        result.rows[k] = job.from.GetPixelFast(0, rowTap.offset[k]);
        result.rowWeights[k] = rowTap.weight[k];
    }
    return result;
}

} // namespace zel
