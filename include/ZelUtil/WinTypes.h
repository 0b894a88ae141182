#pragma once

/// The bitmap records of the published BMP format: the platform's own on Windows, the same layout elsewhere.

#if defined(_WIN32)

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#else

#include <cstdint>

/// One entry of a colour table. The fourth byte is reserved and not a part of the colour.
struct tagRGBQUAD
{
    std::uint8_t rgbBlue;
    std::uint8_t rgbGreen;
    std::uint8_t rgbRed;
    std::uint8_t rgbReserved;
};
using RGBQUAD = tagRGBQUAD;

/// The info header of 40 bytes that stands before the colour table.
struct tagBITMAPINFOHEADER
{
    std::uint32_t biSize;
    std::int32_t biWidth;
    std::int32_t biHeight;
    std::uint16_t biPlanes;
    std::uint16_t biBitCount;
    std::uint32_t biCompression;
    std::uint32_t biSizeImage;
    std::int32_t biXPelsPerMeter;
    std::int32_t biYPelsPerMeter;
    std::uint32_t biClrUsed;
    std::uint32_t biClrImportant;
};
using BITMAPINFOHEADER = tagBITMAPINFOHEADER;

/// Header and colour table in one block; the table goes on behind its one declared entry.
struct tagBITMAPINFO
{
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
using BITMAPINFO = tagBITMAPINFO;

#endif

static_assert(sizeof(tagRGBQUAD) == 4);
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(sizeof(BITMAPINFO) == 44);
