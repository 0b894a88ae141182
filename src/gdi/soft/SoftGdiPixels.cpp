#include "ZelUtil/SoftGdi.h"

#include "gdi/soft/SoftDevice.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>

using zel::soft::Bitmap, zel::soft::Colors, zel::soft::ColorAt, zel::soft::Context, zel::soft::kWhite,
    zel::soft::LockedDevice, zel::soft::NearestBlackOrWhite, zel::soft::ToStored;

namespace
{

// Converts a COLORREF to a pixel, or a pixel to a COLORREF: red and blue change places.
std::uint32_t SwapRedAndBlue(std::uint32_t color)
{
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// Reads pixel x of a row: an index at 1, 4 and 8 bits, otherwise the pixel converted to 32 bits.
std::uint32_t RawPixel(const std::uint8_t* row, std::int64_t x, int depth)
{
    const auto widened = [](int value)
    { return static_cast<std::uint32_t>((value & 31) << 3 | (value & 31) >> 2); };
    switch (depth)
    {
    case 1:
        return row[x / 8] >> (7 - x % 8) & 1;
    case 4:
        return row[x / 2] >> (4 - 4 * (x % 2)) & 15;
    case 8:
        return row[x];
    case 16:
    {
        const int word = row[2 * x] | row[2 * x + 1] << 8;
        return widened(word >> 10) << 16 | widened(word >> 5) << 8 | widened(word);
    }
    case 24:
        return static_cast<std::uint32_t>(row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16);
    default:
        std::uint32_t pixel;
        std::memcpy(&pixel, row + 4 * x, sizeof pixel);
        return pixel;
    }
}

// A device-independent bitmap as a caller passes it. Row 0 is the top row of the picture.
class Dib
{
public:
    /// Nothing if the calls refuse the header, or if a pointer is null.
    static std::optional<Dib> From(const BITMAPINFO* info, const void* bits)
    {
        if (info == nullptr || bits == nullptr)
            return std::nullopt;
        const BITMAPINFOHEADER& header = info->bmiHeader;
        const int depth = header.biBitCount;
        if (header.biSize < sizeof header || header.biPlanes == 0 || header.biCompression != BI_RGB ||
            header.biWidth <= 0 || header.biHeight == 0 ||
            (depth != 1 && depth != 4 && depth != 8 && depth != 16 && depth != 24 && depth != 32))
            return std::nullopt;
        return Dib(*info, static_cast<const std::uint8_t*>(bits));
    }

    int Width() const { return m_header.biWidth; }
    std::int64_t Height() const { return std::abs(std::int64_t{m_header.biHeight}); }

    const std::uint8_t* Row(std::int64_t y) const
    {
        return m_bits + (m_header.biHeight > 0 ? Height() - 1 - y : y) * m_rowBytes;
    }

    std::uint32_t Pixel(const std::uint8_t* row, std::int64_t x) const
    {
        const std::uint32_t value = RawPixel(row, x, m_header.biBitCount);
        return m_header.biBitCount <= 8 ? TableColor(value) : value;
    }

private:
    Dib(const BITMAPINFO& info, const std::uint8_t* bits)
        : m_header(info.bmiHeader), m_bits(bits),
          m_table(reinterpret_cast<const std::uint8_t*>(&info) + m_header.biSize),
          m_rowBytes((std::int64_t{m_header.biWidth} * m_header.biBitCount + 31) / 32 * 4)
    {
        const std::uint32_t full = m_header.biBitCount <= 8 ? 1U << m_header.biBitCount : 0;
        m_colors = m_header.biClrUsed == 0 || m_header.biClrUsed > full ? full : m_header.biClrUsed;
    }

    std::uint32_t TableColor(std::uint32_t index) const
    {
        if (index >= m_colors)
            return 0;
        const std::uint8_t* const color = m_table + 4 * index;
        return static_cast<std::uint32_t>(color[0] | color[1] << 8 | color[2] << 16);
    }

    BITMAPINFOHEADER m_header;
    const std::uint8_t* m_bits;
    const std::uint8_t* m_table;
    std::int64_t m_rowBytes;
    std::uint32_t m_colors;
};

// One axis of a rectangle: `count` positions that are numbered from 0 at `start` upward, or downward if the
// extent is negative. Those with the numbers `first` to `last` lie inside a bitmap of `size` pixels.
struct ClippedExtent
{
    std::int64_t start;
    std::int64_t count;
    bool backwards;
    std::int64_t first;
    std::int64_t last;

    ClippedExtent(std::int64_t from, std::int64_t extent, std::int64_t size)
        : start(from), count(std::abs(extent)), backwards(extent < 0),
          first(std::max<std::int64_t>(backwards ? from - (size - 1) : -from, 0)),
          last(std::min(backwards ? from : size - 1 - from, count - 1))
    {
    }

    bool IsEmpty() const { return first > last; }
    std::int64_t At(std::int64_t number) const { return backwards ? start - number : start + number; }
};

// One axis of an unscaled copy: the lowest position in the target and in the source, and the count of
// positions that lie inside both. Both extents have the same sign: a negative one mirrors target and source,
// which cancels out.
struct SharedExtent
{
    std::int64_t to;
    std::int64_t from;
    std::int64_t count;

    SharedExtent(const ClippedExtent& target, const ClippedExtent& source)
    {
        const std::int64_t first = std::max(target.first, source.first);
        const std::int64_t last = std::min(target.last, source.last);
        to = target.At(target.backwards ? last : first);
        from = source.At(source.backwards ? last : first);
        count = last - first + 1;
    }
};

using Range = std::pair<std::int64_t, std::int64_t>; // first and last number; empty if the first is larger

// The numbers of the source positions that target position number `j` takes, without those outside the
// source. The borders between the positions of the smaller extent, k * larger / smaller rounded half up,
// divide the larger one into groups. If the target is the larger, all positions of its group k take source
// position k. If it is the smaller, position j takes the whole group j.
Range SourceRange(const ClippedExtent& dest, const ClippedExtent& source, std::int64_t j)
{
    const auto n = static_cast<std::uint64_t>(source.count), m = static_cast<std::uint64_t>(dest.count);
    const auto number = static_cast<std::uint64_t>(j);
    std::uint64_t first = ((2 * number + 1) * n - 1) / (2 * m), last = first;
    if (m < n)
    {
        first = (2 * number * n + m) / (2 * m);
        last = (2 * (number + 1) * n + m) / (2 * m) - 1;
    }
    return {std::max(static_cast<std::int64_t>(first), source.first),
            std::min(static_cast<std::int64_t>(last), source.last)};
}

// Combines the pixels of a block into one: AND for BLACKONWHITE, OR for WHITEONBLACK. In the other modes the
// last column of the first row stands for the block. The ranges must not be empty.
std::uint32_t CombinePixels(const Dib& dib, const ClippedExtent& sourceX, const ClippedExtent& sourceY,
                            Range columns, Range rows, int mode)
{
    const std::uint8_t* const top = dib.Row(sourceY.At(rows.first));
    if (mode != BLACKONWHITE && mode != WHITEONBLACK)
        return dib.Pixel(top, sourceX.At(columns.second));

    std::uint32_t pixel = dib.Pixel(top, sourceX.At(columns.first));
    if (rows.first == rows.second && columns.first == columns.second)
        return pixel;
    for (std::int64_t i = rows.first; i <= rows.second; ++i)
    {
        const std::uint8_t* const row = dib.Row(sourceY.At(i));
        for (std::int64_t column = columns.first; column <= columns.second; ++column)
        {
            const std::uint32_t other = dib.Pixel(row, sourceX.At(column));
            pixel = mode == BLACKONWHITE ? pixel & other : pixel | other;
        }
    }
    return pixel;
}

} // namespace

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitCount, const void* bits)
{
    if (planes != 1 || (bitCount != 1 && bitCount != 8 && bitCount != 16 && bitCount != 24 && bitCount != 32))
        return nullptr;
    const LockedDevice device;
    const HBITMAP handle = AddBitmap(device, width, height, static_cast<int>(bitCount));
    Bitmap* const bitmap = device.FindBitmap(handle);
    if (bitmap == nullptr || handle == device->stockBitmap || bits == nullptr)
        return handle;

    const auto* row = static_cast<const std::uint8_t*>(bits);
    for (int y = 0; y < bitmap->height;
         ++y, row += (std::int64_t{bitmap->width} * bitmap->depth + 15) / 16 * 2)
        for (std::int64_t x = 0; x < bitmap->width; ++x)
        {
            const std::uint32_t value = RawPixel(row, x, bitmap->depth);
            bitmap->Row(y)[x] = bitmap->depth == 1 && value != 0 ? kWhite : value;
        }
    return handle;
}

HBITMAP CreateDIBitmap(HDC dc, const BITMAPINFOHEADER* header, DWORD flags, const void* bits,
                       const BITMAPINFO* info, UINT usage)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    if (header == nullptr || header->biSize < sizeof *header || header->biWidth < 0 ||
        usage != DIB_RGB_COLORS || (dc != nullptr && context == nullptr))
        return nullptr;

    const bool fills = (flags & CBM_INIT) != 0 && header->biWidth != 0 && header->biHeight != 0;
    const std::optional<Dib> dib = fills ? Dib::From(info, bits) : std::nullopt;
    if (fills && !dib)
        return nullptr;

    const Bitmap* const target = context == nullptr ? nullptr : device.Target(*context);
    const int depth = context == nullptr ? 1 : target == nullptr ? device->screen.depth : target->depth;
    const HBITMAP handle = AddBitmap(device, header->biWidth, header->biHeight, depth);
    Bitmap* const bitmap = device.FindBitmap(handle);
    if (bitmap == nullptr || !dib)
        return handle;

    const int width = std::min(bitmap->width, dib->Width());
    const auto height = static_cast<int>(std::min<std::int64_t>(bitmap->height, dib->Height()));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const std::uint32_t pixel = dib->Pixel(dib->Row(y), x);
            bitmap->Row(y)[x] =
                depth == 1 ? NearestBlackOrWhite(pixel) : ToStored(device->screen, depth, pixel);
        }
    return handle;
}

int StretchDIBits(HDC dc, int destX, int destY, int destWidth, int destHeight, int srcX, int srcY,
                  int srcWidth, int srcHeight, const void* bits, const BITMAPINFO* info, UINT usage,
                  DWORD operation)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    const std::optional<Dib> dib = Dib::From(info, bits);
    if (context == nullptr || !dib || usage != DIB_RGB_COLORS || operation != SRCCOPY)
        return 0;

    // srcY counts rows from the bottom of the picture.
    const ClippedExtent sourceX(srcX, srcWidth, dib->Width());
    const ClippedExtent sourceY(dib->Height() - srcY - srcHeight, srcHeight, dib->Height());
    if (sourceX.IsEmpty() || sourceY.IsEmpty())
        return 0;

    const int result = static_cast<int>(dib->Height());
    Bitmap* const target = device.Target(*context);
    if (target == nullptr)
        return result;
    const ClippedExtent targetX(destX, destWidth, target->width), targetY(destY, destHeight, target->height);
    if (targetX.IsEmpty() || targetY.IsEmpty())
        return result;

    try
    {
        const std::size_t count = static_cast<std::size_t>(targetX.last - targetX.first) + 1;
        std::vector<Range> columns;
        columns.reserve(count);
        for (std::int64_t i = targetX.first; i <= targetX.last; ++i)
            columns.push_back(SourceRange(targetX, sourceX, i));

        bool drawn = false;
        for (std::int64_t j = targetY.first; j <= targetY.last; ++j)
        {
            const Range rows = SourceRange(targetY, sourceY, j);
            if (rows.first > rows.second)
                continue;
            std::uint32_t* const to = target->Row(static_cast<int>(targetY.At(j)));
            for (std::size_t i = 0; i < count; ++i)
            {
                if (columns[i].first > columns[i].second)
                    continue;
                const std::uint32_t pixel =
                    CombinePixels(*dib, sourceX, sourceY, columns[i], rows, context->stretchMode);
                to[targetX.At(targetX.first + static_cast<std::int64_t>(i))] =
                    ToStored(device->screen, target->depth, pixel);
                drawn = true;
            }
        }
        return drawn ? result : 0;
    }
    catch (const std::exception&)
    {
        return 0; // no memory for the columns
    }
}

BOOL BitBlt(HDC dest, int x, int y, int width, int height, HDC source, int srcX, int srcY, DWORD operation)
{
    const LockedDevice device;
    const Context* const destContext = device.FindContext(dest);
    const Context* const sourceContext = device.FindContext(source);
    if (destContext == nullptr || sourceContext == nullptr || sourceContext->isScreen || operation != SRCCOPY)
        return FALSE;
    Bitmap* const to = device.Target(*destContext);
    const Bitmap* const from = device.Target(*sourceContext);
    if (to == nullptr)
        return TRUE;

    const SharedExtent columns({x, width, to->width}, {srcX, width, from->width});
    const SharedExtent rows({y, height, to->height}, {srcY, height, from->height});
    if (columns.count <= 0)
        return TRUE;

    for (std::int64_t i = 0; i < rows.count; ++i)
    {
        // If both are the same bitmap, every row must be read before it is overwritten.
        const std::int64_t row = rows.to > rows.from ? rows.count - 1 - i : i;
        std::uint32_t* const out = to->Row(static_cast<int>(rows.to + row)) + columns.to;
        const std::uint32_t* const in = from->Row(static_cast<int>(rows.from + row)) + columns.from;
        if (to->depth == from->depth)
        {
            std::memmove(out, in, static_cast<std::size_t>(columns.count) * sizeof *out);
            continue;
        }
        const Colors* const indexed = from->depth == 8 ? &device.ScreenColors() : nullptr;
        for (std::int64_t column = 0; column < columns.count; ++column)
            out[column] = ToStored(device->screen, to->depth,
                                   indexed == nullptr ? in[column] : ColorAt(*indexed, in[column]));
    }
    return TRUE;
}

int GetDIBits(HDC dc, HBITMAP bitmap, UINT start, UINT lines, void* bits, BITMAPINFO* info, UINT usage)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    const Bitmap* const source = device.FindBitmap(bitmap);
    if (context == nullptr || source == nullptr || info == nullptr || usage != DIB_RGB_COLORS)
        return 0;
    BITMAPINFOHEADER& header = info->bmiHeader;
    if (header.biSize < sizeof header || header.biPlanes == 0 || header.biBitCount != 32 ||
        header.biCompression != BI_RGB || header.biWidth != source->width ||
        std::abs(std::int64_t{header.biHeight}) != source->height)
        return 0;

    const auto height = static_cast<UINT>(source->height);
    const UINT count = start >= height ? 0 : std::min(lines, height - start);
    if (count > 0 || bits == nullptr)
        header.biSizeImage = static_cast<DWORD>(4 * source->width * source->height);
    if (bits == nullptr)
        return source->height;

    // Indices stand for colours of the selected palette, or of the screen if that is the default palette.
    const Colors& colors = context->colors == nullptr ? device.ScreenColors() : *context->colors;
    auto* out = static_cast<std::uint8_t*>(bits);
    for (UINT i = 0; i < count; ++i)
    {
        const UINT fromBottom = start + (header.biHeight > 0 ? i : count - 1 - i);
        const std::uint32_t* const row = source->Row(static_cast<int>(height - 1 - fromBottom));
        for (int x = 0; x < source->width; ++x, out += 4)
        {
            const std::uint32_t pixel = source->depth == 8 ? ColorAt(colors, row[x]) : row[x];
            std::memcpy(out, &pixel, sizeof pixel);
        }
    }
    return static_cast<int>(count);
}

COLORREF GetPixel(HDC dc, int x, int y)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    const Bitmap* const bitmap = context == nullptr ? nullptr : device.Target(*context);
    if (bitmap == nullptr || x < 0 || y < 0 || x >= bitmap->width || y >= bitmap->height)
        return CLR_INVALID;
    const std::uint32_t pixel = bitmap->Row(y)[x];
    return SwapRedAndBlue(bitmap->depth == 8 ? ColorAt(device.ScreenColors(), pixel) : pixel);
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF color)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    if (context == nullptr)
        return CLR_INVALID;
    Bitmap* const bitmap = device.Target(*context);
    if (bitmap == nullptr || x < 0 || y < 0 || x >= bitmap->width || y >= bitmap->height)
        return 0;

    std::uint32_t& pixel = bitmap->Row(y)[x];
    if (bitmap->depth == 1)
        return pixel = NearestBlackOrWhite(SwapRedAndBlue(color));
    pixel = ToStored(device->screen, bitmap->depth, SwapRedAndBlue(color));
    return SwapRedAndBlue(bitmap->depth == 8 ? ColorAt(device.ScreenColors(), pixel) : pixel);
}
