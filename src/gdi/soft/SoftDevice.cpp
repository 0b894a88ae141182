#include "gdi/soft/SoftDevice.h"

#include <algorithm>
#include <cstdlib>
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

std::uint32_t ToPixel(const PALETTEENTRY& color)
{
    return static_cast<std::uint32_t>(color.peRed) << 16 | static_cast<std::uint32_t>(color.peGreen) << 8 |
           color.peBlue;
}

std::uint32_t NearestIndex(const Colors& colors, std::uint32_t pixel)
{
    const auto distance = [pixel](const PALETTEENTRY& color)
    {
        const int red = color.peRed - static_cast<int>(pixel >> 16 & 0xFF);
        const int green = color.peGreen - static_cast<int>(pixel >> 8 & 0xFF);
        const int blue = color.peBlue - static_cast<int>(pixel & 0xFF);
        return red * red + green * green + blue * blue;
    };
    const auto nearest = std::min_element(colors.begin(), colors.end(),
                                          [&](const PALETTEENTRY& a, const PALETTEENTRY& b)
                                          { return distance(a) < distance(b); });
    return nearest == colors.end() ? 0 : static_cast<std::uint32_t>(nearest - colors.begin());
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

std::uint32_t ColorAt(const Colors& colors, std::uint32_t index)
{
    return index < colors.size() ? ToPixel(colors[index]) : 0;
}

std::uint32_t ToStored(const Screen& screen, int depth, std::uint32_t pixel)
{
    if (depth == 1)
        return (pixel & kWhite) == kWhite ? kWhite : 0;
    return depth == 8 ? NearestIndex(screen.colors, pixel) : pixel;
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
