#pragma once

#include "ZelUtil/Export.h"
#include "ZelUtil/WinTypes.h"

#if defined(ZELUTIL_SOFT_GDI)

/// \file
/// Off Windows: the graphics calls behind CWinDib, and those that a caller needs to prepare and to look at
/// what they draw, over memory. They have the names, arguments, results and pixels of the system's calls on a
/// Windows machine whose display has 32 bits, and shows nothing: contexts and bitmaps in memory are whole,
/// what is drawn on the screen is lost.
///
/// - Handles: a null, stale or foreign one makes the call fail as on Windows. Nearly 65,000 can live at a
///   time; nothing is released but by the calls for it.
/// - Bitmaps: those of 1 bit and of the screen's depth can be selected and drawn on; CreateBitmap makes those
///   of 1, 8, 16, 24 and 32 bits, whose pixels GetDIBits reads.
/// - Drawing: source pixels become those of the target: as they are at 32 bits, the fourth byte too (0 from
///   fewer bits); white where they are white, else black, at 1 bit; the nearest of the screen's colours at 8
///   bits. SetPixel and CreateDIBitmap choose the nearer of black and white. Only SRCCOPY and DIB_RGB_COLORS
///   are known, and HALFTONE, by which Windows interpolates, draws as COLORONCOLOR does.
/// - Threads: they may call at the same time, as long as no two use one context.
///
/// The stock bitmap is that of a fresh memory context, and what an empty size gives: 1 x 1 at 1 bit.

/// What the screen is from now on: `bitCount` is 32, or 8 for a palette device with the `count` colours, up
/// to 256, of `palette`. At first 1024 x 768 at 32 bits. False, with nothing changed, for anything else.
/// Contexts and bitmaps stay as they are; a bitmap of another depth than the screen's can only be read.
ZELUTIL_API bool SetSoftScreen(int width, int height, int bitCount, const PALETTEENTRY* palette,
                               unsigned count);

/// \name Contexts
/// A window is null, the screen.
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
ZELUTIL_API HGDIOBJ GetStockObject(int index);                 ///< DEFAULT_PALETTE, or null
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
