#include "ZelUtil/TarvexDib.h"

#include "image/Block.h"
#include "image/BmpHeader.h"
#include "image/Resize.h"
#include "kernels/Kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

using zel::Block;

namespace
{

// What CopyRect reads: rows from the bottom row of the picture upward.
struct PixelSource
{
    const unsigned char* bottomRow;
    std::int64_t rowBytes;
    int width;
    int height;
    bool isDistinct; // shares no pixel with the target
};

bool CopyRegion(const CTarvexDib& to, int destX, int destY, const PixelSource& from, int srcX, int srcY,
                int columns, int srcRowEnd)
{
    if (destX < 0 || destY < 0 || srcX < 0 || srcY < 0)
        return false;
    if (destX >= to.Width() || destY >= to.Height() || srcX >= from.width || srcY >= from.height)
        return false;

    const int count = std::min({columns, from.width - srcX, to.Width() - destX});
    const int rowEnd = std::min(srcRowEnd, from.height);
    if (count <= 0 || rowEnd <= srcY)
        return true;
    if (from.bottomRow == nullptr)
        return false;

    const int rows = std::min(rowEnd - srcY, to.Height() - destY);
    const std::int64_t bytes = static_cast<std::int64_t>(count) * to.PixelSize();
    for (int i = 0; i < rows; ++i)
    {
        // From the bottom row up, the order of memory. Raw pixels may overlap the target; they are copied
        // from the top row down, and memmove lets a row overlap itself.
        const int row = from.isDistinct ? rows - 1 - i : i;
        const std::int64_t storedRow = from.height - 1 - (srcY + row);
        const unsigned char* source =
            from.bottomRow + (storedRow * from.rowBytes + static_cast<std::int64_t>(srcX) * to.PixelSize());
        std::memmove(to.GetPixelFast(destX, destY + row), source, static_cast<std::size_t>(bytes));
    }
    return true;
}

} // namespace

bool CTarvexDib::ChangeToTrueColor(bool withAlpha)
{
    if (m_header == nullptr)
        return false;
    const int oldBits = BitCount();
    const int newBits = withAlpha ? 32 : 24;
    if (oldBits >= newBits)
        return true;
    if (!zel::IsSupported(m_width, m_height, newBits, 0))
        return false;

    const int step = newBits / 8;
    const std::int64_t rowBytes = zel::RowBytes(m_width, newBits);
    const std::int64_t imageBytes = rowBytes * m_height;
    Block bits = zel::Allocate(imageBytes);
    if (bits == nullptr)
        return false;
    zel::ClearPadding(bits.get(), rowBytes, std::int64_t{step} * m_width, m_height);

    std::uint32_t pixels[256] = {};
    const int tableEntries = std::min(GetNumColors(oldBits), TableEntries());
    std::memcpy(pixels, GetColorTable(), static_cast<std::size_t>(tableEntries) * sizeof(tagRGBQUAD));
    for (std::uint32_t& pixel : pixels)
        pixel |= 0xFF000000;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    unsigned char* to = bits.get();
    for (int row = 0; row < m_height && rowBytes > 0; ++row, to += rowBytes)
    {
        const unsigned char* from = GetScanLine(row);
        if (oldBits <= 8)
            zel::PaletteToTrueColorRow(to, step, from, oldBits, pixels, m_width);
        else if (oldBits == 16)
            zel::Bgr555ToTrueColorRow(to, step, from, m_width);
        else
            kernels.bgr24ToBgra32Row(to, from, m_width);
    }

    delete[] m_bits;
    m_bits = bits.release();
    m_numColors = 0;
    m_header->biClrUsed = 0;
    m_header->biBitCount = static_cast<std::uint16_t>(newBits);
    m_header->biSizeImage = static_cast<std::uint32_t>(imageBytes);
    SetMetrics();
    return true;
}

bool CTarvexDib::Clone(const CTarvexDib& src, int left, int top, int right, int bottom) const
{
    if (&src == this || src.BitCount() < 24 || BitCount() < 24)
        return false;
    if (left < 0 || left >= src.m_width || right < left || right > src.m_width)
        return false;
    if (top < 0 || top >= src.m_height || bottom < top || bottom > src.m_height)
        return false;
    if (m_width == 0 || m_height == 0)
        return true;

    const double stepX = static_cast<double>(right - left) / m_width;
    const double stepY = static_cast<double>(bottom - top) / m_height;
    const auto columns =
        zel::Tabulate(m_width, [&](int i) { return (static_cast<int>(i * stepX) + left) * src.m_pixelSize; });

    // The rounding errors of very many additions could reach the row after the last one.
    const auto rows = zel::TabulateRows(
        m_height, top, stepY, [&](double y) { return std::min(static_cast<int>(y), src.m_height - 1); });
    zel::ScaleRows(*this, src, columns.get(), rows.get(), std::min(m_pixelSize, src.m_pixelSize), true);
    return true;
}

bool CTarvexDib::CopyRect(int destX, int destY, const CTarvexDib& src, int srcX, int srcY, int columns,
                          int srcRowEnd) const
{
    if (&src == this || src.BitCount() < 24 || BitCount() != src.BitCount())
        return false;

    const PixelSource from = {src.m_bits, src.m_scanLineBytes, src.m_width, src.m_height, true};
    return CopyRegion(*this, destX, destY, from, srcX, srcY, columns, srcRowEnd);
}

bool CTarvexDib::CopyRect(int destX, int destY, unsigned char* const pixels, int pixelsWidth,
                          int pixelsHeight, int bitCount, int srcX, int srcY, int columns,
                          int srcRowEnd) const
{
    if (bitCount < 24 || BitCount() != bitCount)
        return false;

    const PixelSource from = {pixels, std::int64_t{m_pixelSize} * pixelsWidth, pixelsWidth, pixelsHeight,
                              false};
    return CopyRegion(*this, destX, destY, from, srcX, srcY, columns, srcRowEnd);
}
