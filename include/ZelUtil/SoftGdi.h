#pragma once

#include "ZelUtil/Export.h"
#include "ZelUtil/WinTypes.h"

#if defined(ZELUTIL_SOFT_GDI)

/// \file
/// Off Windows: in-memory versions of the graphics calls that CWinDib uses, and of those needed to set up a
/// context and to read its pixels. Names, arguments, results and pixels are those of a Windows machine with a
/// display of 32 bits. There is no display: what is drawn on the screen is discarded.
///
/// - Handles: a call with a null, stale or foreign handle fails as on Windows. Nearly 65,000 objects can
///   exist at the same time, and each lives until the caller deletes or releases it.
/// - Bitmaps: those of 1 bit and of the screen's depth can be selected and drawn on. CreateBitmap makes
///   bitmaps of 1, 8, 16, 24 and 32 bits, and GetDIBits reads them all.
/// - Drawing: pixels are converted to the target's depth. At 32 bits they are stored as they are, with their
///   fourth byte, which is 0 if the source has fewer bits. At 1 bit only white becomes white, and at 8 bits
///   the nearest of the screen's colours is stored. SetPixel and CreateDIBitmap convert to 1 bit by
///   brightness. Only SRCCOPY and DIB_RGB_COLORS are supported. HALFTONE, for which Windows interpolates,
///   draws like COLORONCOLOR.
/// - Threads: they may call at the same time, provided that no two use the same context.
///
/// The stock bitmap has 1 x 1 pixels of 1 bit. It is selected in every new memory context, and is what the
/// creating calls return for an empty size.

/// Changes the screen. `bitCount` is 32, or 8 for a palette device with the `count` colours (1 to 256) of
/// `palette`. Before the first call the screen has 1024 x 768 pixels of 32 bits. Returns false, with nothing
/// changed, for any other arguments and when memory runs out. Existing contexts and bitmaps keep their
/// contents, but a bitmap that does not have the screen's depth can no longer be selected.
ZELUTIL_API bool SetSoftScreen(int width, int height, int bitCount, const PALETTEENTRY* palette,
                               unsigned count);

/// \name Contexts
/// The only window is null, which stands for the screen.
/// @{
ZELUTIL_API HDC GetDC(HWND window);
ZELUTIL_API int ReleaseDC(HWND window, HDC dc);
ZELUTIL_API HDC CreateCompatibleDC(HDC dc);
ZELUTIL_API BOOL DeleteDC(HDC dc);
ZELUTIL_API int GetDeviceCaps(HDC dc, int index);
ZELUTIL_API int GetStretchBltMode(HDC dc);
ZELUTIL_API int SetStretchBltMode(HDC dc, int mode);
/// @}

/// \name Objects
/// @{
ZELUTIL_API HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitCount, const void* bits);
ZELUTIL_API HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);
ZELUTIL_API HBITMAP CreateDIBitmap(HDC dc, const BITMAPINFOHEADER* header, DWORD flags, const void* bits,
                                   const BITMAPINFO* info, UINT usage);
ZELUTIL_API HPALETTE CreatePalette(const LOGPALETTE* palette); ///< version 0x300, 1 to 1024 entries
ZELUTIL_API HGDIOBJ GetStockObject(int index);                 ///< null unless `index` is DEFAULT_PALETTE
ZELUTIL_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
ZELUTIL_API BOOL DeleteObject(HGDIOBJ object);
ZELUTIL_API int GetObjectA(HGDIOBJ object, int size, void* record);
inline int GetObject(HGDIOBJ object, int size, void* record)
{
    return GetObjectA(object, size, record);
}
/// @}

/// \name Palettes
/// @{
ZELUTIL_API UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY* entries);
ZELUTIL_API HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL forceBackground);
ZELUTIL_API UINT RealizePalette(HDC dc);
/// @}

/// \name Pixels
/// @{
ZELUTIL_API int StretchDIBits(HDC dc, int destX, int destY, int destWidth, int destHeight, int srcX, int srcY,
                              int srcWidth, int srcHeight, const void* bits, const BITMAPINFO* info,
                              UINT usage, DWORD operation);
ZELUTIL_API BOOL BitBlt(HDC dest, int x, int y, int width, int height, HDC source, int srcX, int srcY,
                        DWORD operation);
ZELUTIL_API int GetDIBits(HDC dc, HBITMAP bitmap, UINT start, UINT lines, void* bits, BITMAPINFO* info,
                          UINT usage);
ZELUTIL_API COLORREF GetPixel(HDC dc, int x, int y);
ZELUTIL_API COLORREF SetPixel(HDC dc, int x, int y, COLORREF color);
/// @}

#endif
