// A script of graphics calls on the device over memory, each compared with a model: what there is, what the
// call gives, and afterwards every pixel.

#include "Properties.h"

#include "StretchModel.h"
#include "ZelUtil/WinDib.h"

#include <cstring>
#include <map>

using namespace test;
using test::Area;
using test::Pixels;

namespace
{

constexpr std::uint32_t kWhite = 0x00FFFFFF;
constexpr std::size_t kMaxHandles = 24;
constexpr int kMaxCommands = 60;

struct ModelBitmap
{
    int width, height, depth;
    Pixels pixels; // rows from the top, as they are read
    HGDIOBJ selectedIn = nullptr;
    bool isDeleted = false;
};

struct ModelContext
{
    bool isScreen;
    HGDIOBJ bitmap;
    HGDIOBJ palette;
    int mode = BLACKONWHITE;
};

std::uint32_t Swapped(std::uint32_t color)
{
    return (color & 255) << 16 | (color & 0xFF00) | (color >> 16 & 255);
}

std::uint32_t NearerOfTwo(std::uint32_t pixel)
{
    return 30 * (pixel >> 16 & 255) + 59 * (pixel >> 8 & 255) + 11 * (pixel & 255) > 12700 ? kWhite : 0;
}

std::uint32_t Stored(int depth, std::uint32_t pixel)
{
    return depth == 1 ? (pixel & kWhite) == kWhite ? kWhite : 0 : pixel;
}

// An image as the calls take it, in blocks of exactly the size that is read, and with all its colours.
struct Source
{
    Bytes info, bits;
    CTarvexDib dib;

    explicit Source(Input& input)
    {
        const int depths[] = {1, 4, 8, 16, 24, 32};
        const int width = 1 + input.Below(9), height = 1 + input.Below(9), depth = depths[input.Below(6)];
        const int full = depth <= 8 ? 1 << depth : 0;
        const int used = full == 0 ? 0 : input.Below(full);
        const int table = used == 0 ? full : used;
        Bytes packed = test::RandomPacked(width, height, depth, used, 0);
        const std::size_t pixels = packed.size() - 40;
        unsigned value = input.Byte();
        const auto fill = [&](Bytes& bytes, std::size_t count)
        {
            for (std::size_t i = 0; i < count; ++i, value = value * 5 + 1)
                bytes.push_back(static_cast<unsigned char>(value % 7 == 0 ? 255 : value >> 3));
        };
        packed.resize(40);
        info = packed;
        fill(info, static_cast<std::size_t>(4 * table));
        fill(bits, pixels);
        packed = info;
        packed.resize(static_cast<std::size_t>(40 + 4 * full)); // the rest is black
        std::fill_n(packed.begin() + 32, 4, static_cast<unsigned char>(0));
        packed.insert(packed.end(), bits.begin(), bits.end());
        dib = test::FromPacked(packed);
    }

    BITMAPINFO* Info() { return reinterpret_cast<BITMAPINFO*>(info.data()); }
};

class Script
{
public:
    Script()
    {
        HDC const screen = GetDC(nullptr);
        m_reader = CreateCompatibleDC(screen);
        m_stock = CreateCompatibleBitmap(screen, 0, 0);
        SetPixel(m_reader, 0, 0, 0); // of the stock bitmap
        ReleaseDC(nullptr, screen);
        m_defaultPalette = GetStockObject(DEFAULT_PALETTE);
        m_bitmaps[m_stock] = {1, 1, 1, {0}};
        m_palettes[m_defaultPalette] = 20;
        m_handles = {nullptr, reinterpret_cast<HGDIOBJ>(std::size_t{0x7FF0FFF0}), m_stock, m_defaultPalette};
    }

    void Run(Input& input)
    {
        for (int i = 0; i < kMaxCommands && !input.IsEmpty(); ++i)
            Step(input);
        for (const auto& [handle, bitmap] : m_bitmaps)
            RequireRead(handle, bitmap);
    }

    ~Script()
    {
        while (!m_contexts.empty())
            Delete(m_contexts.begin()->first);
        for (HGDIOBJ const handle : m_handles)
            Delete(handle);
        for (HGDIOBJ const handle : m_handles)
            Require(handle == m_stock || handle == m_defaultPalette || !DeleteObject(handle),
                    "a handle ends with its object");
        DeleteDC(m_reader);
    }

private:
    template <typename Type>
    static Type* Find(std::map<HGDIOBJ, Type>& objects, const void* handle)
    {
        const auto found = objects.find(const_cast<HGDIOBJ>(handle));
        return found == objects.end() ? nullptr : &found->second;
    }

    ModelContext* Context(HDC dc) { return Find(m_contexts, dc); }
    // Null on the screen.
    ModelBitmap* Target(const ModelContext& context)
    {
        return context.isScreen ? nullptr : Find(m_bitmaps, context.bitmap);
    }

    HGDIOBJ Handle(Input& input) { return m_handles[input.Byte() % m_handles.size()]; }
    // Likely a context.
    HDC Dc(Input& input)
    {
        const unsigned choice = input.Byte();
        if (choice % 8 == 7 || m_contexts.empty())
            return static_cast<HDC>(m_handles[choice / 8 % m_handles.size()]);
        return static_cast<HDC>(
            std::next(m_contexts.begin(), static_cast<std::ptrdiff_t>(choice / 8 % m_contexts.size()))
                ->first);
    }
    static int Position(Input& input) { return input.Below(40) - 12; }

    // A new handle is none that is alive.
    bool Take(HGDIOBJ handle)
    {
        Require(handle != nullptr && m_bitmaps.count(handle) + m_contexts.count(handle) == 0 &&
                    m_palettes.count(handle) == 0,
                "a new object has a handle of its own");
        m_handles.push_back(handle);
        return true;
    }

    void TakeBitmap(HGDIOBJ handle, std::int64_t width, std::int64_t height, int depth,
                    const Pixels& pixels = {})
    {
        width = std::abs(width);
        height = std::abs(height);
        if (width == 0 || height == 0)
            return Require(handle == m_stock, "nothing is the stock bitmap");
        if (width > 0x7FFFFFFF / 4 / height)
            return Require(handle == nullptr, "too large a bitmap is none");
        Take(handle);
        m_bitmaps[handle] = {static_cast<int>(width), static_cast<int>(height), depth, pixels};
        m_bitmaps[handle].pixels.resize(static_cast<std::size_t>(width * height));
    }

    void Deselect(HGDIOBJ handle)
    {
        ModelBitmap& bitmap = m_bitmaps[handle];
        bitmap.selectedIn = nullptr;
        if (bitmap.isDeleted)
            m_bitmaps.erase(handle);
    }

    bool DeleteContext(HGDIOBJ dc)
    {
        const ModelContext* const context = Find(m_contexts, dc);
        if (context == nullptr)
            return false;
        if (!context->isScreen && context->bitmap != m_stock)
            Deselect(context->bitmap);
        m_contexts.erase(dc);
        return true;
    }

    void Delete(HGDIOBJ handle)
    {
        bool isDeleted = true;
        if (ModelBitmap* const bitmap = Find(m_bitmaps, handle); bitmap != nullptr)
        {
            bitmap->isDeleted = handle != m_stock;
            if (bitmap->isDeleted && bitmap->selectedIn == nullptr)
                m_bitmaps.erase(handle);
        }
        else if (handle != m_defaultPalette && m_palettes.erase(handle) == 0)
            isDeleted = DeleteContext(handle);
        Require((DeleteObject(handle) != 0) == isDeleted, "what lives can be deleted");
    }

    Pixels Read(HGDIOBJ handle, const ModelBitmap& bitmap)
    {
        BITMAPINFO info = {};
        info.bmiHeader = {40, bitmap.width, -bitmap.height, 1, 32, 0, 0, 0, 0, 0, 0};
        Pixels pixels(bitmap.pixels.size());
        const int lines = GetDIBits(m_reader, static_cast<HBITMAP>(handle), 0,
                                    static_cast<UINT>(bitmap.height), pixels.data(), &info, DIB_RGB_COLORS);
        Require(lines == bitmap.height, "every row is read");
        return pixels;
    }

    void RequireRead(HGDIOBJ handle, const ModelBitmap& bitmap)
    {
        Require(Read(handle, bitmap) == bitmap.pixels, "the pixels are those of the model");
    }

    // One pixel after another, from what was there before.
    static void Blit(ModelBitmap& to, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height,
                     const ModelBitmap& source, std::int64_t srcX, std::int64_t srcY)
    {
        const ModelBitmap from = source;
        const std::int64_t backX = width < 0 ? width + 1 : 0, backY = height < 0 ? height + 1 : 0;
        for (int row = 0; row < to.height; ++row)
            for (int column = 0; column < to.width; ++column)
            {
                const std::int64_t u = column - (x + backX), v = row - (y + backY);
                const std::int64_t fromX = srcX + backX + u, fromY = srcY + backY + v;
                if (u >= 0 && v >= 0 && u < std::abs(width) && v < std::abs(height) && fromX >= 0 &&
                    fromY >= 0 && fromX < from.width && fromY < from.height)
                    to.pixels[static_cast<std::size_t>(row * to.width + column)] =
                        Stored(to.depth, from.pixels[static_cast<std::size_t>(fromY * from.width + fromX)]);
            }
    }

    void Step(Input& input)
    {
        const int command = input.Below(20);
        if (command < 6 && m_handles.size() < kMaxHandles)
            Create(command, input);
        else if (command < 10)
            Manage(command, input);
        else
            Draw(command, input);
    }

    void Create(int command, Input& input)
    {
        if (command == 0)
        {
            HDC const dc = GetDC(nullptr);
            Take(dc);
            m_contexts[dc] = {true, nullptr, m_defaultPalette};
        }
        else if (command == 1)
        {
            HDC const like = Dc(input), dc = CreateCompatibleDC(like);
            if (like != nullptr && Context(like) == nullptr)
                return Require(dc == nullptr, "like no context, none");
            Take(dc);
            m_contexts[dc] = {false, m_stock, m_defaultPalette};
        }
        else if (command == 2)
        {
            HDC const dc = Dc(input);
            const int width = input.Number(), height = input.Number();
            HGDIOBJ const bitmap = CreateCompatibleBitmap(dc, width, height);
            const ModelContext* const context = Context(dc);
            if (context == nullptr)
                return Require(bitmap == nullptr, "like no context, no bitmap");
            TakeBitmap(bitmap, width, height, context->isScreen ? 32 : Target(*context)->depth);
        }
        else if (command == 3)
            CreateFromRows(input);
        else if (command == 4)
            CreateFromDib(input);
        else
        {
            const int count = input.Byte() * 5;
            Bytes block(sizeof(LOGPALETTE) + 4 * static_cast<std::size_t>(count));
            auto* const palette = reinterpret_cast<LOGPALETTE*>(block.data());
            palette->palVersion = input.Byte() == 255 ? WORD{0} : WORD{0x300};
            palette->palNumEntries = static_cast<WORD>(count);
            HGDIOBJ const handle = CreatePalette(palette);
            if (count == 0 || count > 1024 || palette->palVersion == 0)
                return Require(handle == nullptr, "not a palette");
            Take(handle);
            m_palettes[handle] = count;
        }
    }

    void CreateFromRows(Input& input)
    {
        const int depths[] = {1, 32, 16, 24};
        const int width = 1 + input.Below(20), height = 1 + input.Below(20), depth = depths[input.Below(4)];
        const auto rowBytes = static_cast<std::size_t>((width * depth + 15) / 16 * 2);
        Bytes rows = input.Take(input.Below(2) == 0 ? 0 : rowBytes * static_cast<std::size_t>(height));
        rows.resize(rowBytes * static_cast<std::size_t>(height), 0xA5);

        // The image that has these rows, from the bottom and filled up to four bytes.
        Bytes packed = test::RandomPacked(width, height, depth, 0, depth == 1 ? 2 : 0);
        if (depth == 1)
            test::WriteBytes(&packed[40], {0, 0, 0, 0, 255, 255, 255, 0});
        CTarvexDib dib = test::FromPacked(packed);
        for (int y = 0; y < height; ++y)
            std::copy_n(rows.begin() + static_cast<std::ptrdiff_t>(rowBytes) * y, rowBytes,
                        dib.GetScanLine(height - 1 - y));
        Pixels pixels;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                pixels.push_back(test::DevicePixel(dib, x, y));

        TakeBitmap(CreateBitmap(width, height, 1, static_cast<UINT>(depth), rows.data()), width, height,
                   depth, pixels);
        Require(CreateBitmap(width, height, 1, 5, rows.data()) == nullptr, "no bitmap has 5 bits");
    }

    void CreateFromDib(Input& input)
    {
        HDC const dc = Dc(input);
        Source source(input);
        BITMAPINFOHEADER& header = source.Info()->bmiHeader;
        const int spoilt = input.Below(24);
        header.biWidth = spoilt == 1 ? 0 : spoilt == 2 ? -header.biWidth : header.biWidth;
        header.biHeight = spoilt == 3 ? 0 : header.biHeight;
        header.biSize = spoilt == 4 ? 39 : 40;
        header.biPlanes = spoilt != 5;
        const bool isFilled = spoilt == 5 || spoilt % 4 != 0;
        const HBITMAP bitmap = CreateDIBitmap(dc, &header, isFilled ? CBM_INIT : 0, source.bits.data(),
                                              source.Info(), DIB_RGB_COLORS);
        const ModelContext* const context = Context(dc);
        if (spoilt == 2 || spoilt == 4 || spoilt == 5 || (dc != nullptr && context == nullptr))
            return Require(bitmap == nullptr, "not an image, or no context, no bitmap");
        const int depth = context == nullptr ? 1 : context->isScreen ? 32 : Target(*context)->depth;
        Pixels pixels;
        for (int y = 0; isFilled && y < header.biHeight; ++y)
            for (int x = 0; x < header.biWidth; ++x)
            {
                const std::uint32_t pixel = test::DevicePixel(source.dib, x, y);
                pixels.push_back(depth == 1 ? NearerOfTwo(pixel) : pixel);
            }
        TakeBitmap(bitmap, header.biWidth, header.biHeight, depth, pixels);
    }

    void Manage(int command, Input& input)
    {
        HDC const dc = Dc(input);
        HGDIOBJ const handle = Handle(input);
        ModelContext* const context = Context(dc);
        ModelBitmap* const bitmap = Find(m_bitmaps, handle);
        if (command == 6)
        {
            const bool fits = context != nullptr && !context->isScreen && bitmap != nullptr &&
                              (bitmap->depth == 1 || bitmap->depth == 32) &&
                              (bitmap->selectedIn == nullptr || bitmap->selectedIn == dc);
            HGDIOBJ const expected = fits ? context->bitmap : nullptr;
            Require(SelectObject(dc, handle) == expected, "what was selected comes back");
            if (!fits || expected == handle)
                return;
            context->bitmap = handle;
            bitmap->selectedIn = handle == m_stock ? nullptr : dc;
            if (expected != m_stock)
                Deselect(expected);
        }
        else if (command == 7)
        {
            const auto entries = m_palettes.find(handle);
            HGDIOBJ const expected =
                context == nullptr || entries == m_palettes.end() ? nullptr : context->palette;
            Require(SelectPalette(dc, static_cast<HPALETTE>(handle), FALSE) == expected &&
                        RealizePalette(dc) == 0,
                    "the palette comes back");
            if (expected != nullptr)
                context->palette = handle;
        }
        else if (command == 8)
        {
            BITMAP record = {};
            const int expected = bitmap != nullptr               ? static_cast<int>(sizeof record)
                                 : m_palettes.count(handle) != 0 ? 2
                                                                 : 0;
            Require(GetObject(handle, sizeof record, &record) == expected &&
                        GetObject(handle, 0, nullptr) == expected && GetObject(handle, 1, &record) == 0,
                    "an object has its record");
            Require(bitmap == nullptr ||
                        (record.bmWidth == bitmap->width && record.bmHeight == bitmap->height &&
                         record.bmBitsPixel == bitmap->depth && record.bmPlanes == 1 &&
                         record.bmWidthBytes == (bitmap->width * bitmap->depth + 15) / 16 * 2),
                    "a bitmap is described");
        }
        else if (input.Below(3) == 0)
        {
            const bool isScreen = context != nullptr && context->isScreen;
            Require(ReleaseDC(nullptr, dc) == isScreen, "contexts of the screen are released");
            if (isScreen)
                m_contexts.erase(dc);
        }
        else
            Delete(handle);
    }

    void Draw(int command, Input& input)
    {
        HDC const dc = Dc(input);
        ModelContext* const context = Context(dc);
        ModelBitmap* const target = context == nullptr ? nullptr : Target(*context);
        if (command == 10)
        {
            const int mode = input.Below(6), before = context == nullptr ? 0 : context->mode;
            const bool isMode = context != nullptr && mode >= 1 && mode <= 4;
            Require(GetStretchBltMode(dc) == before && SetStretchBltMode(dc, mode) == (isMode ? before : 0) &&
                        GetDeviceCaps(dc, RASTERCAPS) == (context == nullptr ? 0 : 0xBE99),
                    "the mode before comes back");
            if (isMode)
                context->mode = mode;
        }
        else if (command == 11)
        {
            const int x = Position(input), y = Position(input);
            const unsigned grey = input.Byte(), other = input.Byte();
            DrawPixel(dc, target, x, y, grey << 16 | other << 8 | grey | other << 24);
        }
        else if (command < 14)
            DrawBlit(dc, context, target, input);
        else if (command < 17)
            DrawStretched(dc, context, target, input);
        else if (command == 17)
            ReadRows(dc, input);
        else
            CheckCapture(dc, context, target, input);
    }

    void DrawPixel(HDC dc, ModelBitmap* target, int x, int y, COLORREF color)
    {
        const bool isInside =
            target != nullptr && x >= 0 && y >= 0 && x < target->width && y < target->height;
        if (!isInside)
        {
            Require(GetPixel(dc, x, y) == CLR_INVALID &&
                        SetPixel(dc, x, y, color) == (Context(dc) == nullptr ? CLR_INVALID : 0),
                    "no pixel outside");
            return;
        }
        std::uint32_t& pixel = target->pixels[static_cast<std::size_t>(y * target->width + x)];
        Require(GetPixel(dc, x, y) == Swapped(pixel), "a pixel is read");
        pixel = target->depth == 1 ? NearerOfTwo(Swapped(color)) : Swapped(color);
        Require(SetPixel(dc, x, y, color) == Swapped(pixel) && GetPixel(dc, x, y) == Swapped(pixel),
                "a pixel is set");
    }

    void DrawBlit(HDC dc, const ModelContext* context, ModelBitmap* target, Input& input)
    {
        HDC const other = Dc(input);
        const int x = Position(input), y = Position(input), width = input.Number(), height = input.Number(),
                  srcX = input.Number(), srcY = Position(input);
        const ModelContext* const from = Context(other);
        const bool isDone = context != nullptr && from != nullptr && !from->isScreen;
        Require((BitBlt(dc, x, y, width, height, other, srcX, srcY, SRCCOPY) != 0) == isDone,
                "pixels are copied between contexts");
        if (!isDone || target == nullptr)
            return;
        Blit(*target, x, y, width, height, *Target(*from), srcX, srcY);
        RequireRead(context->bitmap, *target);
    }

    void DrawStretched(HDC dc, const ModelContext* context, ModelBitmap* target, Input& input)
    {
        Source source(input);
        const int height = source.dib.Height();
        const bool isHuge = input.Below(8) == 7;
        const auto extent = [&] { return isHuge ? input.Number() : input.Below(48) - 16; };
        const Area dest = {Position(input), Position(input), extent(), extent()};
        const auto source1 = [&] { return isHuge ? input.Number() : input.Below(14); };
        const Area src = {input.Below(14) - 4, input.Below(14) - 4, source1(), source1()};
        BITMAPINFOHEADER& header = source.Info()->bmiHeader;
        const int spoilt = input.Below(32);
        header.biPlanes = spoilt != 1;
        header.biCompression = spoilt == 2;
        header.biBitCount = spoilt == 3 ? WORD{5} : header.biBitCount;
        header.biSize = spoilt == 4 ? 39 : 40;
        const int result =
            StretchDIBits(dc, dest.x, dest.y, dest.width, dest.height, src.x, src.y, src.width, src.height,
                          source.bits.data(), source.Info(), DIB_RGB_COLORS, SRCCOPY);
        if (isHuge) // too much to try pixel by pixel
        {
            if (target != nullptr)
                target->pixels = Read(context->bitmap, *target);
            return Require(result == 0 || (result == height && context != nullptr), "the height or nothing");
        }

        // What is written does not depend on what was there.
        const bool isImage = context != nullptr && (spoilt < 1 || spoilt > 4) && src.width > 0 &&
                             src.height > 0 && src.x < source.dib.Width() && src.x + src.width > 0 &&
                             src.y < height && src.y + src.height > 0;
        const auto meets = [](int at, int size, int limit)
        { return size > 0 ? at < limit && at + size > 0 : size < 0 && at >= 0 && at + size < limit - 1; };
        const bool isSeen = target != nullptr && meets(dest.x, dest.width, target->width) &&
                            meets(dest.y, dest.height, target->height);
        bool isDrawn = false;
        if (isImage && isSeen)
        {
            Pixels dark(target->pixels.size()), bright(target->pixels.size(), 0xFFFFFFFF);
            const int mode = context->mode == HALFTONE ? COLORONCOLOR : context->mode;
            for (Pixels* const canvas : {&dark, &bright})
                test::StretchByDefinition(*canvas, target->width, target->height, dest, source.dib, src,
                                          mode);
            for (std::size_t i = 0; i < dark.size(); ++i)
                if (dark[i] == bright[i])
                {
                    target->pixels[i] = Stored(target->depth, dark[i]);
                    isDrawn = true;
                }
        }
        Require(result == (isImage && (isDrawn || !isSeen) ? height : 0), "the height of what is drawn");
        if (target != nullptr)
            RequireRead(context->bitmap, *target);
    }

    void ReadRows(HDC dc, Input& input)
    {
        HGDIOBJ const handle = Handle(input);
        const ModelBitmap* const bitmap = Find(m_bitmaps, handle);
        const UINT start = input.Byte() % 24U, lines = input.Byte() % 24U;
        const bool isTopDown = input.Below(2) == 1;
        const int width = bitmap == nullptr ? 1 : bitmap->width,
                  height = bitmap == nullptr ? 1 : bitmap->height;
        const bool isRead = bitmap != nullptr && Context(dc) != nullptr && static_cast<int>(start) < height;
        const int count = isRead ? std::min(static_cast<int>(lines), height - static_cast<int>(start)) : 0;
        BITMAPINFO info = {};
        info.bmiHeader = {40, width, isTopDown ? -height : height, 1, 32, 0, 0, 0, 0, 0, 0};
        Pixels rows(static_cast<std::size_t>(width * count)), expected;
        for (int i = 0; i < count; ++i)
        {
            const int fromBottom = static_cast<int>(start) + (isTopDown ? count - 1 - i : i);
            const auto row = bitmap->pixels.begin() + (height - 1 - fromBottom) * width;
            expected.insert(expected.end(), row, row + width);
        }
        unsigned char none = 0;
        void* const to = rows.empty() ? static_cast<void*>(&none) : rows.data();
        Require(GetDIBits(dc, static_cast<HBITMAP>(handle), start, lines, to, &info, DIB_RGB_COLORS) ==
                        count &&
                    rows == expected,
                "rows are read from the bottom");
    }

    void CheckCapture(HDC dc, const ModelContext* context, const ModelBitmap* target, Input& input)
    {
        const int left = Position(input), top = Position(input), right = input.Number(),
                  bottom = Position(input);
        const std::int64_t width = std::int64_t{right} - left, height = std::int64_t{bottom} - top;
        CWinDib dib;
        dib.Create(1, 1, 8);
        const bool isCaptured = dib.Capture(dc, CRect(left, top, right, bottom));
        const bool isEmpty = width == 0 || height == 0;
        if (context == nullptr || std::abs(width) > 1000)
        {
            // Where there is no bitmap for it, the stock one takes its pixel.
            m_bitmaps[m_stock].pixels = Read(m_stock, m_bitmaps[m_stock]);
            return Require(dib.BitCount() == 0 ? !isCaptured : isCaptured && isEmpty, "nothing is captured");
        }
        Require(isCaptured && dib.BitCount() == 32, "a context is captured");
        if (isEmpty)
            return Require(dib.Width() == 1 && dib.Height() == 1, "of nothing there is one pixel");

        ModelBitmap captured = {static_cast<int>(std::abs(width)),
                                static_cast<int>(std::abs(height)),
                                target == nullptr ? 32 : target->depth,
                                {}};
        captured.pixels.resize(static_cast<std::size_t>(captured.width * captured.height));
        if (target != nullptr)
            Blit(captured, 0, 0, width, height, *target, left, top);
        Require(dib.Width() == captured.width && dib.Height() == captured.height, "the capture's size");
        for (int y = 0; y < captured.height; ++y)
            Require(std::memcmp(dib.GetPixelFast(0, y),
                                &captured.pixels[static_cast<std::size_t>(y * captured.width)],
                                static_cast<std::size_t>(4 * captured.width)) == 0,
                    "the capture has the context's pixels");
    }

    HDC m_reader;
    HGDIOBJ m_stock, m_defaultPalette;
    std::vector<HGDIOBJ> m_handles; // of all there ever was
    std::map<HGDIOBJ, ModelBitmap> m_bitmaps;
    std::map<HGDIOBJ, ModelContext> m_contexts;
    std::map<HGDIOBJ, int> m_palettes;
};

} // namespace

void property::Gdi(Input input)
{
    Script script;
    script.Run(input);
}
