#pragma once

#include "ZelUtil/TarvexDib.h"

#include <cstddef>
#include <memory>

/// The roads of CTarvexDib::Resize, one for each method. Each fills all pixels of `to`, `channels` bytes a
/// pixel, from an image with pixels; both have 24 or 32 bits. A step is the distance of two pixels of `to` in
/// `from`. std::bad_alloc, before the first pixel, where memory for the tables runs out.
namespace zel
{

void ResizeNearest(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels);
void ResizeLinear(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels);
void ResizeCubic(const CTarvexDib& to, const CTarvexDib& from, double stepX, double stepY, int channels);

/// Fills `to` with pixels of `from`: in row r and column i the `channels` bytes in row rows[r] at columns[i].
/// Alpha, where `to` has some and `from` has none, stays, or becomes 255 when `opaque`.
void ScaleRows(const CTarvexDib& to, const CTarvexDib& from, const int* columns, const int* rows,
               int channels, bool opaque);

/// What `entryOf` gives for each column, or row. std::bad_alloc where memory runs out, on 32 bits too.
template <typename EntryOf>
auto Tabulate(int columns, const EntryOf& entryOf)
{
    using Entry = decltype(entryOf(0));
    auto table = std::make_unique_for_overwrite<Entry[]>(static_cast<std::size_t>(columns));
    for (int i = 0; i < columns; ++i)
        table.get()[i] = entryOf(i);
    return table;
}

} // namespace zel
