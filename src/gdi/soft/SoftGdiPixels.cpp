#include "ZelUtil/SoftGdi.h"

#include "gdi/soft/SoftDevice.h"
#include "image/Resize.h"
#include "kernels/Kernels.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>

using zel::soft::Bitmap, zel::soft::ColorTable, zel::soft::Context, zel::soft::kWhite,
    zel::soft::LockedDevice, zel::soft::NearestBlackOrWhite, zel::soft::Screen, zel::soft::StoredFormat;

namespace
{

// Converts a COLORREF to a pixel, or a pixel to a COLORREF: red and blue change places.
std::uint32_t SwapRedAndBlue(std::uint32_t color)
{
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

std::uint8_t* BytesOf(std::uint32_t* pixels)
{
    return reinterpret_cast<std::uint8_t*>(pixels);
}

// Converts a row to 4-byte pixels: indices by a table, and with a fourth byte of 0 unless it has 32 bits.
void ConvertRow(std::uint8_t* out, const std::uint8_t* row, int depth, const std::uint32_t* table, int count)
{
    if (depth == 32)
        std::memcpy(out, row, 4 * static_cast<std::size_t>(count));
    else if (depth <= 8)
        zel::PaletteToTrueColorRow(out, 4, row, depth, table, count);
    else
    {
        const zel::KernelTable& kernels = zel::ActiveKernels();
        if (depth == 16)
            zel::Bgr555ToTrueColorRow(out, 4, row, count);
        else
            kernels.bgr24ToBgra32Row(out, row, count);
        kernels.fillAlphaRow(out, 0, count);
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
    int Depth() const { return m_header.biBitCount; }

    /// Row y from column x on, which must begin with a whole byte: a multiple of 8 does.
    const std::uint8_t* Row(std::int64_t x, std::int64_t y) const
    {
        return m_bits + (m_header.biHeight > 0 ? Height() - 1 - y : y) * m_rowBytes + x * Depth() / 8;
    }

    void Convert(std::uint8_t* out, const std::uint8_t* row, int count) const
    {
        ConvertRow(out, row, Depth(), m_table, count);
    }

private:
    Dib(const BITMAPINFO& info, const std::uint8_t* bits)
        : m_header(info.bmiHeader), m_bits(bits),
          m_rowBytes((std::int64_t{m_header.biWidth} * m_header.biBitCount + 31) / 32 * 4), m_table()
    {
        const std::uint32_t full = Depth() <= 8 ? 1U << Depth() : 0;
        const bool isFull = m_header.biClrUsed == 0 || m_header.biClrUsed > full;
        std::memcpy(m_table, reinterpret_cast<const std::uint8_t*>(&info) + m_header.biSize,
                    sizeof *m_table * (isFull ? full : m_header.biClrUsed));
        for (std::uint32_t& color : m_table)
            color &= kWhite;
    }

    BITMAPINFOHEADER m_header;
    const std::uint8_t* m_bits;
    std::int64_t m_rowBytes;
    std::uint32_t m_table[256]; ///< black beyond the last colour
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

// Leaves out the target positions whose source positions all lie outside the source: some at either end,
// since the groups follow each other without gaps.
void SkipEmpty(ClippedExtent& dest, const ClippedExtent& source)
{
    const auto isEmpty = [&](std::int64_t j)
    {
        const Range range = SourceRange(dest, source, j);
        return range.first > range.second;
    };
    while (!dest.IsEmpty() && isEmpty(dest.first))
        ++dest.first;
    while (!dest.IsEmpty() && isEmpty(dest.last))
        --dest.last;
}

// Combines two rows into `out`, which may be the first of them.
void CombineRows(std::uint8_t* out, const std::uint8_t* a, const std::uint8_t* b, bool isAnd, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out[i] = static_cast<std::uint8_t>(isAnd ? a[i] & b[i] : a[i] | b[i]);
}

// Combines the pixels of a row from the byte offsets[i] to the byte offsets[i + 1] into pixel i of `out`.
void CombineColumns(std::uint32_t* out, const std::uint8_t* row, const int* offsets, bool isAnd, int count)
{
    const auto pixelAt = [row](int offset)
    {
        std::uint32_t pixel;
        std::memcpy(&pixel, row + offset, sizeof pixel);
        return pixel;
    };
    for (int i = 0; i < count; ++i)
    {
        out[i] = pixelAt(offsets[i]);
        for (int offset = offsets[i] + 4; offset < offsets[i + 1]; offset += 4)
            out[i] = isAnd ? out[i] & pixelAt(offset) : out[i] | pixelAt(offset);
    }
}

// Draws the source extents into the target extents, none of which is empty. In the modes BLACKONWHITE and
// WHITEONBLACK the pixels of a block are combined by AND and by OR. In the others the last column of the
// first row stands for the block. Returns whether there was a pixel to draw. Throws std::bad_alloc, with
// nothing drawn, if memory runs out.
bool Stretch(Bitmap& target, ClippedExtent targetX, ClippedExtent targetY, const Dib& dib,
             const ClippedExtent& sourceX, const ClippedExtent& sourceY, int mode, const Screen& screen)
{
    SkipEmpty(targetX, sourceX);
    SkipEmpty(targetY, sourceY);
    if (targetX.IsEmpty() || targetY.IsEmpty())
        return false;

    // Target pixels are numbered from the left of the source, whose columns are counted from one that begins
    // with a whole byte.
    const bool isAnd = mode == BLACKONWHITE, combines = isAnd || mode == WHITEONBLACK;
    const auto count = static_cast<int>(targetX.last - targetX.first + 1);
    const auto columnsOf = [&](int i)
    {
        Range range = SourceRange(targetX, sourceX, sourceX.backwards ? targetX.last - i : targetX.first + i);
        if (!combines)
            range.first = range.second;
        return std::minmax({sourceX.At(range.first), sourceX.At(range.second)});
    };
    const std::int64_t left = columnsOf(0).first / 8 * 8, end = columnsOf(count - 1).second + 1;
    if (end - left > std::numeric_limits<int>::max() / 4)
        throw std::bad_alloc();
    const auto columns = static_cast<int>(end - left);
    const auto offsets =
        zel::Tabulate(count + 1, [&](int i)
                      { return 4 * static_cast<int>((i < count ? columnsOf(i).first : end) - left); });

    // The bits of pixels can be combined before these are converted; those of indices cannot.
    const int depth = dib.Depth();
    const auto roomBytes = 4 * static_cast<std::size_t>(columns);
    const auto room = std::make_unique_for_overwrite<std::uint8_t[]>(2 * roomBytes);
    std::uint8_t *const combined = room.get(), *const other = combined + roomBytes;
    const auto combinable = [&](std::int64_t number, std::uint8_t* out)
    {
        const std::uint8_t* const row = dib.Row(left, sourceY.At(number));
        if (depth > 8)
            return row;
        dib.Convert(out, row, columns);
        return static_cast<const std::uint8_t*>(out);
    };

    StoredFormat format(screen, target.depth);
    const std::uint32_t* drawn = nullptr;
    Range drawnRows = {-1, -1};
    for (std::int64_t j = targetY.last; j >= targetY.first; --j) // in the order of memory
    {
        std::uint32_t* const to = target.Row(static_cast<int>(targetY.At(j))) +
                                  targetX.At(targetX.backwards ? targetX.last : targetX.first);
        Range rows = SourceRange(targetY, sourceY, j);
        if (!combines)
            rows.second = rows.first;
        if (rows == drawnRows)
        {
            std::copy_n(drawn, count, to);
            continue;
        }
        drawn = to;
        drawnRows = rows;

        const std::uint8_t* pixels = combinable(rows.first, combined);
        for (std::int64_t row = rows.first + 1; row <= rows.second; ++row)
        {
            CombineRows(combined, pixels, combinable(row, other), isAnd,
                        columns * (depth > 8 ? depth / 8 : 4));
            pixels = combined;
        }
        if (depth == 16 || depth == 24)
        {
            dib.Convert(other, pixels, columns);
            pixels = other;
        }
        if (sourceX.count == targetX.count)
            std::memcpy(to, pixels + offsets[0], 4 * static_cast<std::size_t>(count));
        else if (combines && sourceX.count > targetX.count)
            CombineColumns(to, pixels, offsets.get(), isAnd, count);
        else
            zel::ActiveKernels().scaleColumnsRow(BytesOf(to), 4, pixels, offsets.get(), count, 4);
        if (targetX.backwards != sourceX.backwards)
            std::reverse(to, to + count);
        format.Convert(to, count);
    }
    return true;
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

    constexpr std::uint32_t kBlackAndWhite[] = {0, kWhite};
    const auto* row = static_cast<const std::uint8_t*>(bits);
    for (int y = 0; y < bitmap->height;
         ++y, row += (std::int64_t{bitmap->width} * bitmap->depth + 15) / 16 * 2)
        if (bitmap->depth == 8)
            std::copy_n(row, bitmap->width, bitmap->Row(y));
        else
            ConvertRow(BytesOf(bitmap->Row(y)), row, bitmap->depth, kBlackAndWhite, bitmap->width);
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
    StoredFormat format(device->screen, depth);
    for (int y = 0; y < height; ++y)
    {
        std::uint32_t* const row = bitmap->Row(y);
        dib->Convert(BytesOf(row), dib->Row(0, y), width);
        if (depth == 1)
            std::transform(row, row + width, row, NearestBlackOrWhite);
        else
            format.Convert(row, width);
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
        return Stretch(*target, targetX, targetY, *dib, sourceX, sourceY, context->stretchMode,
                       device->screen)
                   ? result
                   : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
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

    const ColorTable colors(device.ScreenColors());
    StoredFormat format(device->screen, to->depth);
    const auto count = static_cast<int>(columns.count);
    for (std::int64_t i = 0; i < rows.count; ++i)
    {
        // If both are the same bitmap, every row must be read before it is overwritten.
        const std::int64_t row = rows.to >= rows.from ? rows.count - 1 - i : i;
        std::uint32_t* const out = to->Row(static_cast<int>(rows.to + row)) + columns.to;
        const std::uint32_t* const in = from->Row(static_cast<int>(rows.from + row)) + columns.from;
        std::memmove(out, in, 4 * static_cast<std::size_t>(count));
        if (to->depth == from->depth)
            continue;
        if (from->depth == 8)
            std::transform(out, out + count, out, [&](std::uint32_t index) { return colors.pixels[index]; });
        format.Convert(out, count);
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
    const ColorTable colors(context->colors == nullptr ? device.ScreenColors() : *context->colors);
    auto* out = static_cast<std::uint8_t*>(bits);
    for (UINT i = 0; i < count; ++i, out += 4 * source->width)
    {
        const UINT fromBottom = start + (header.biHeight > 0 ? i : count - 1 - i);
        const std::uint32_t* const row = source->Row(static_cast<int>(height - 1 - fromBottom));
        if (source->depth != 8)
            std::memcpy(out, row, 4 * static_cast<std::size_t>(source->width));
        else
            for (int x = 0; x < source->width; ++x)
                std::memcpy(out + 4 * x, &colors.pixels[row[x]], 4);
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
    return SwapRedAndBlue(bitmap->depth == 8 ? ColorTable(device.ScreenColors()).pixels[pixel] : pixel);
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
    pixel = SwapRedAndBlue(color);
    StoredFormat(device->screen, bitmap->depth).Convert(&pixel, 1);
    return SwapRedAndBlue(bitmap->depth == 8 ? ColorTable(device.ScreenColors()).pixels[pixel] : pixel);
}
