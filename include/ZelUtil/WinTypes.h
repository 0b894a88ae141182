#pragma once

/// \file
/// The structures of the published BMP format, and the types and constants of the graphics calls. On Windows
/// they are those of the system's headers; on other systems they are declared here, with the same names,
/// layouts and values.

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

/// One entry of a colour table. The fourth byte is reserved and not part of the colour.
struct tagRGBQUAD
{
    std::uint8_t rgbBlue;
    std::uint8_t rgbGreen;
    std::uint8_t rgbRed;
    std::uint8_t rgbReserved;
};
using RGBQUAD = tagRGBQUAD;

/// The info header of 40 bytes, which precedes the colour table.
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

/// Header and colour table in one block. The table continues after its one declared entry.
struct tagBITMAPINFO
{
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
using BITMAPINFO = tagBITMAPINFO;

using BOOL = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using COLORREF = DWORD; ///< 0x00bbggrr

using HGDIOBJ = void*; ///< any of the handles below
using HDC = struct HDC__*;
using HWND = struct HWND__*;
using HBITMAP = struct HBITMAP__*;
using HPALETTE = struct HPALETTE__*;

/// A rectangle: the columns left to right - 1 and the rows top to bottom - 1.
struct tagRECT
{
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using RECT = tagRECT;

/// The description of a device bitmap that GetObject fills in.
struct tagBITMAP
{
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    void* bmBits;
};
using BITMAP = tagBITMAP;

/// One colour of a palette. Only Windows uses the flags.
struct tagPALETTEENTRY
{
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
};
using PALETTEENTRY = tagPALETTEENTRY;

/// A palette to be created. Its colours continue after their one declared entry.
struct tagLOGPALETTE
{
    WORD palVersion; ///< always 0x300
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
};
using LOGPALETTE = tagLOGPALETTE;

#if !defined(FALSE) // other headers define these macros too
#define FALSE 0
#endif
#if !defined(TRUE)
#define TRUE 1
#endif

inline constexpr DWORD BI_RGB = 0, CBM_INIT = 4, SRCCOPY = 0x00CC0020;
inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr int DEFAULT_PALETTE = 15;
inline constexpr int HORZRES = 8, VERTRES = 10, BITSPIXEL = 12, PLANES = 14, RASTERCAPS = 38,
                     SIZEPALETTE = 104;
inline constexpr int RC_PALETTE = 0x0100;
inline constexpr int BLACKONWHITE = 1, WHITEONBLACK = 2, COLORONCOLOR = 3, HALFTONE = 4;
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

#define ZELUTIL_SOFT_GDI // the library provides the graphics calls: SoftGdi.h

#endif

static_assert(sizeof(tagRGBQUAD) == 4);
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(sizeof(BITMAPINFO) == 44);
