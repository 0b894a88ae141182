#include "ZelUtil/SoftGdi.h"

#include "gdi/soft/SoftDevice.h"

#include <algorithm>
#include <cstring>
#include <new>

using zel::soft::Bitmap, zel::soft::Colors, zel::soft::Context, zel::soft::LockedDevice, zel::soft::Palette,
    zel::soft::Screen;

namespace
{

constexpr int kRasterCaps = 0xBE99;
constexpr WORD kPaletteVersion = 0x300;
constexpr unsigned kMaxPaletteEntries = 1024;

HDC AddContext(const LockedDevice& device, bool isScreen)
{
    if (device->defaultPalette == nullptr)
        return nullptr;
    try
    {
        return static_cast<HDC>(
            device->objects.Add(Context{isScreen, device->stockBitmap, device->defaultPalette, nullptr}));
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

// Ends the selection of the context's bitmap, which destroys a bitmap that was deleted meanwhile.
void Deselect(const LockedDevice& device, const Context& context)
{
    Bitmap* const bitmap = device.FindBitmap(context.bitmap);
    bitmap->selectedIn = nullptr;
    if (bitmap->deleted)
        device->objects.Remove(context.bitmap);
}

bool DeleteContext(const LockedDevice& device, HDC dc)
{
    const Context* const context = device.FindContext(dc);
    if (context == nullptr)
        return false;
    Deselect(device, *context);
    device->objects.Remove(dc);
    return true;
}

} // namespace

bool SetSoftScreen(int width, int height, int bitCount, const PALETTEENTRY* palette, unsigned count)
{
    const bool hasPalette = bitCount == 8 && palette != nullptr && count >= 1 && count <= 256;
    if (width <= 0 || height <= 0 || (bitCount != 32 && !hasPalette))
        return false;

    try
    {
        Colors colors;
        if (hasPalette)
            colors.assign(palette, palette + count);
        LockedDevice()->screen = {width, height, bitCount, std::move(colors)};
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

HDC GetDC(HWND window)
{
    return window == nullptr ? AddContext(LockedDevice(), true) : nullptr;
}

int ReleaseDC(HWND, HDC dc)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    if (context == nullptr || !context->isScreen)
        return 0;
    device->objects.Remove(dc);
    return 1;
}

HDC CreateCompatibleDC(HDC dc)
{
    const LockedDevice device;
    return dc == nullptr || device.FindContext(dc) != nullptr ? AddContext(device, false) : nullptr;
}

BOOL DeleteDC(HDC dc)
{
    return DeleteContext(LockedDevice(), dc);
}

int GetDeviceCaps(HDC dc, int index)
{
    const LockedDevice device;
    if (device.FindContext(dc) == nullptr)
        return 0;
    const Screen& screen = device->screen;
    switch (index)
    {
    case HORZRES:
        return screen.width;
    case VERTRES:
        return screen.height;
    case BITSPIXEL:
        return screen.depth;
    case PLANES:
        return 1;
    case RASTERCAPS:
        return screen.depth == 8 ? kRasterCaps | RC_PALETTE : kRasterCaps;
    case SIZEPALETTE:
        return static_cast<int>(screen.colors.size());
    default:
        return 0;
    }
}

int GetStretchBltMode(HDC dc)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    return context == nullptr ? 0 : context->stretchMode;
}

int SetStretchBltMode(HDC dc, int mode)
{
    const LockedDevice device;
    Context* const context = device.FindContext(dc);
    if (context == nullptr || mode < BLACKONWHITE || mode > HALFTONE)
        return 0;
    return std::exchange(context->stretchMode, mode);
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height)
{
    const LockedDevice device;
    const Context* const context = device.FindContext(dc);
    if (context == nullptr)
        return nullptr;
    const Bitmap* const target = device.Target(*context);
    return zel::soft::AddBitmap(device, width, height,
                                target == nullptr ? device->screen.depth : target->depth);
}

HPALETTE CreatePalette(const LOGPALETTE* palette)
{
    if (palette == nullptr || palette->palVersion != kPaletteVersion || palette->palNumEntries == 0 ||
        palette->palNumEntries > kMaxPaletteEntries)
        return nullptr;
    try
    {
        const PALETTEENTRY* const colors = palette->palPalEntry;
        return static_cast<HPALETTE>(LockedDevice()->objects.Add(
            Palette{std::make_shared<Colors>(colors, colors + palette->palNumEntries)}));
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

HGDIOBJ GetStockObject(int index)
{
    return index == DEFAULT_PALETTE ? LockedDevice()->defaultPalette : nullptr;
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object)
{
    const LockedDevice device;
    Context* const context = device.FindContext(dc);
    Bitmap* const bitmap = device.FindBitmap(object);
    if (context == nullptr || context->isScreen || bitmap == nullptr)
        return nullptr;
    if (bitmap->depth != 1 && bitmap->depth != device->screen.depth)
        return nullptr;
    if (bitmap->selectedIn != nullptr && bitmap->selectedIn != dc)
        return nullptr;

    const HBITMAP previous = context->bitmap;
    if (object == previous)
        return previous;
    Deselect(device, *context);
    context->bitmap = static_cast<HBITMAP>(object);
    bitmap->selectedIn = object == device->stockBitmap ? nullptr : dc;
    return previous;
}

BOOL DeleteObject(HGDIOBJ object)
{
    const LockedDevice device;
    if (object == nullptr)
        return FALSE;
    if (object == device->stockBitmap || object == device->defaultPalette)
        return TRUE;
    if (Bitmap* const bitmap = device.FindBitmap(object); bitmap != nullptr && bitmap->selectedIn != nullptr)
    {
        bitmap->deleted = true;
        return TRUE;
    }
    if (device.FindBitmap(object) == nullptr && device->objects.Find<Palette>(object) == nullptr)
        return DeleteContext(device, static_cast<HDC>(object));
    device->objects.Remove(object);
    return TRUE;
}

int GetObjectA(HGDIOBJ object, int size, void* record)
{
    const LockedDevice device;
    if (const Bitmap* const bitmap = device.FindBitmap(object))
    {
        constexpr int kSize = sizeof(BITMAP);
        if (record == nullptr)
            return kSize;
        if (size < kSize)
            return 0;
        const std::int64_t rowBytes = (std::int64_t{bitmap->width} * bitmap->depth + 15) / 16 * 2;
        const BITMAP description = {0,
                                    bitmap->width,
                                    bitmap->height,
                                    static_cast<LONG>(rowBytes),
                                    WORD{1},
                                    static_cast<WORD>(bitmap->depth),
                                    nullptr};
        std::memcpy(record, &description, sizeof description);
        return kSize;
    }
    const Palette* const palette = device->objects.Find<Palette>(object);
    const auto entries = static_cast<WORD>(palette == nullptr ? 0 : palette->colors->size());
    if (palette == nullptr || (record != nullptr && size < static_cast<int>(sizeof entries)))
        return 0;
    if (record != nullptr)
        std::memcpy(record, &entries, sizeof entries);
    return sizeof entries;
}

UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY* entries)
{
    const LockedDevice device;
    const Colors& colors = device->screen.colors;
    if (device.FindContext(dc) == nullptr || start >= colors.size())
        return 0;
    if (entries == nullptr)
        return static_cast<UINT>(colors.size());
    count = std::min(count, static_cast<UINT>(colors.size()) - start);
    std::copy_n(colors.begin() + start, count, entries);
    return count;
}

HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL)
{
    const LockedDevice device;
    Context* const context = device.FindContext(dc);
    const Palette* const selected = device->objects.Find<Palette>(palette);
    if (context == nullptr || selected == nullptr)
        return nullptr;
    context->colors = palette == device->defaultPalette ? nullptr : selected->colors;
    return std::exchange(context->palette, palette);
}

UINT RealizePalette(HDC)
{
    return 0;
}
