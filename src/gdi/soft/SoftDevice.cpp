#include "gdi/soft/SoftDevice.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <new>

namespace zel::soft
{

namespace
{

// The 20 colours of the default palette.
Colors DefaultColors()
{
    constexpr std::uint32_t kColors[] = {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080,
                                         0xC0C0C0, 0xC0DCC0, 0xA6CAF0, 0xFFFBF0, 0xA0A0A4, 0x808080, 0xFF0000,
                                         0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};
    Colors colors;
    for (const std::uint32_t color : kColors)
        colors.push_back(
            {static_cast<BYTE>(color >> 16), static_cast<BYTE>(color >> 8), static_cast<BYTE>(color), 0});
    return colors;
}

// The first of the entries that are nearest to the pixel; 0 if there are none.
std::uint32_t NearestIndex(const Colors& colors, std::uint32_t pixel)
{
    const auto red = static_cast<int>(pixel >> 16 & 0xFF), green = static_cast<int>(pixel >> 8 & 0xFF),
               blue = static_cast<int>(pixel & 0xFF);
    // A squared distance, at most 3 * 255 * 255, times 256, plus an index: vectors find the least of these.
    int least = 0x7FFFFF00, index = 0;
    for (const PALETTEENTRY& color : colors)
    {
        const int r = color.peRed - red, g = color.peGreen - green, b = color.peBlue - blue;
        least = std::min(least, (r * r + g * g + b * b) * 256 + index++);
    }
    return static_cast<std::uint32_t>(least & 0xFF);
}

} // namespace

// The device is never destroyed: destructors of static objects may still delete their handles.
Device& LockedDevice::TheDevice()
{
    alignas(Device) static std::byte storage[sizeof(Device)];
    static Device& device = *new (storage) Device;
    return device;
}

void LockedDevice::AddStockObjects()
{
    try
    {
        HandleTable& objects = m_device.objects;
        if (m_device.stockBitmap == nullptr)
            m_device.stockBitmap = static_cast<HBITMAP>(objects.Add(Bitmap{1, 1, 1, {0}}));
        m_device.defaultPalette =
            static_cast<HPALETTE>(objects.Add(Palette{std::make_shared<Colors>(DefaultColors())}));
    }
    catch (const std::bad_alloc&)
    {
        // The next call tries again.
    }
}

ColorTable::ColorTable(const Colors& colors)
{
    const std::size_t count = std::min(colors.size(), std::size(pixels));
    for (std::size_t i = 0; i < count; ++i)
        pixels[i] =
            static_cast<std::uint32_t>(colors[i].peRed << 16 | colors[i].peGreen << 8 | colors[i].peBlue);
}

StoredFormat::StoredFormat(const Screen& screen, int depth) : m_colors(screen.colors), m_depth(depth)
{
    if (depth == 8) // black is right in every place
        std::fill(std::begin(m_found), std::end(m_found), NearestIndex(m_colors, 0));
}

void StoredFormat::Convert(std::uint32_t* pixels, int count)
{
    if (m_depth == 1)
        for (int i = 0; i < count; ++i)
            pixels[i] = (pixels[i] & kWhite) == kWhite ? kWhite : 0;
    if (m_depth != 8)
        return;
    for (int i = 0; i < count; ++i)
    {
        const std::uint32_t color = pixels[i] & kWhite;
        std::uint32_t& found = m_found[color * 0x9E3779B1 >> (32 - kPlaceBits)];
        if (found >> 8 != color)
            found = color << 8 | NearestIndex(m_colors, color);
        pixels[i] = found & 0xFF;
    }
}

std::uint32_t NearestBlackOrWhite(std::uint32_t pixel)
{
    const std::uint32_t brightness = // in hundredths of a channel's value
        30 * (pixel >> 16 & 0xFF) + 59 * (pixel >> 8 & 0xFF) + 11 * (pixel & 0xFF);
    return brightness > 100 * 127 ? kWhite : 0;
}

HBITMAP AddBitmap(const LockedDevice& device, std::int64_t width, std::int64_t height, int depth)
{
    width = std::abs(width);
    height = std::abs(height);
    if (width == 0 || height == 0)
        return device->stockBitmap;
    if (width > std::numeric_limits<std::int32_t>::max() / 4 / height)
        return nullptr;
    try
    {
        return static_cast<HBITMAP>(device->objects.Add(
            Bitmap{static_cast<int>(width), static_cast<int>(height), depth,
                   std::vector<std::uint32_t>(static_cast<std::size_t>(width * height))}));
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

} // namespace zel::soft
