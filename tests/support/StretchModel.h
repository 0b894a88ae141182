#pragma once

#include "ZelUtil/TarvexDib.h"
#include "ZelUtil/WinTypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

/// How an image is drawn into a device context of 32 bits, by its definition.
namespace test
{

using Pixels =
    std::vector<std::uint32_t>; // rows from the top: blue, green, red, fourth byte from the low end

// What a device of 32 bits makes of the pixel in column x, row y.
inline std::uint32_t DevicePixel(const CTarvexDib& dib, int x, int y)
{
    const unsigned char* const row = dib.GetScanLine(dib.Height() - 1 - y);
    const int bits = dib.BitCount();
    if (bits <= 8)
    {
        const int index = row[x * bits / 8] >> (8 - bits - x * bits % 8) & ((1 << bits) - 1);
        const tagRGBQUAD color = dib.GetColorTable()[index];
        return static_cast<std::uint32_t>(color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue);
    }
    if (bits == 16)
    {
        const int value = row[2 * x] | row[2 * x + 1] << 8;
        std::uint32_t pixel = 0;
        for (const int shift : {10, 5, 0})
            pixel = pixel << 8 |
                    static_cast<std::uint32_t>((value >> shift & 31) << 3 | (value >> shift & 31) >> 2);
        return pixel;
    }
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + x * bits / 8, static_cast<std::size_t>(bits / 8));
    return pixel;
}

// Which of n source positions a target position out of m takes, or is taken together with: source i and
// target j meet where the smaller extent's borders, i * m / n rounded half up, enclose the other.
inline bool Meet(int n, int m, int i, int j)
{
    const auto border = [](int k, int from, int to) { return (2 * k * to + from) / (2 * from); };
    return m >= n ? border(i, n, m) <= j && j < border(i + 1, n, m)
                  : border(j, m, n) <= i && i < border(j + 1, m, n);
}

struct Area
{
    int x, y, width, height;
};

// The stretch from its definition, pixel by pixel; `pixels` is a canvas of `width` x `height`.
inline void StretchByDefinition(Pixels& pixels, int width, int height, const Area& dest,
                                const CTarvexDib& dib, const Area& src, int mode)
{
    const int top = dib.Height() - src.y - src.height; // of the source in the picture
    for (int v = 0; v < std::abs(dest.height); ++v)
        for (int u = 0; u < std::abs(dest.width); ++u)
        {
            const int x = dest.width > 0 ? dest.x + u : dest.x - u,
                      y = dest.height > 0 ? dest.y + v : dest.y - v;
            if (x < 0 || y < 0 || x >= width || y >= height)
                continue;
            std::uint32_t& pixel = pixels[static_cast<std::size_t>(y * width + x)];
            bool first = true;
            for (int j = src.height - 1; j >= 0;
                 --j) // the last one counts in mode 3: the top row, the right column
                for (int i = 0; i < src.width; ++i)
                {
                    const int column = src.x + i, row = top + j;
                    if (column < 0 || row < 0 || column >= dib.Width() || row >= dib.Height() ||
                        !Meet(src.width, std::abs(dest.width), i, u) ||
                        !Meet(src.height, std::abs(dest.height), j, v))
                        continue;
                    const std::uint32_t value = DevicePixel(dib, column, row);
                    if (first || mode == COLORONCOLOR)
                        pixel = value;
                    else
                        pixel = mode == BLACKONWHITE ? pixel & value : pixel | value;
                    first = false;
                }
        }
}

} // namespace test
