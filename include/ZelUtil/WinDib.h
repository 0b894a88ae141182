#pragma once

#include "ZelUtil/SoftGdi.h"
#include "ZelUtil/TarvexDib.h"
#include "ZelUtil/WinTypes.h"

/// \name Wrappers of handles
/// They follow the class library that Windows programs know, but offer only what is needed to hand such
/// objects to CWinDib. A wrapper owns the handle that it holds and deletes it in its destructor; it cannot be
/// copied. Attach and the Create functions may only be called while it holds none.
/// @{

/// A rectangle whose corners are stored as they are given.
class CRect : public tagRECT
{
public:
    CRect() : tagRECT{0, 0, 0, 0} {}
    CRect(int l, int t, int r, int b) : tagRECT{l, t, r, b} {}
    CRect(const RECT& rect) : tagRECT(rect) {}

    /// Computed modulo 2^32; negative if right < left, or bottom < top.
    int Width() const { return Extent(left, right); }
    int Height() const { return Extent(top, bottom); }

private:
    static int Extent(LONG from, LONG to)
    {
        return static_cast<int>(static_cast<DWORD>(to) - static_cast<DWORD>(from));
    }
};

/// A device context.
class CDC
{
public:
    CDC() = default;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;
    virtual ~CDC() { DeleteDC(); }

    /// Wraps a context without owning it. Each thread has one such wrapper, so the result is valid until the
    /// thread's next call.
    static CDC* FromHandle(HDC dc)
    {
        struct Borrowed : CDC
        {
            ~Borrowed() override { Detach(); }
        };
        thread_local Borrowed borrowed;
        borrowed.m_hDC = dc;
        return &borrowed;
    }

    BOOL Attach(HDC dc)
    {
        m_hDC = dc;
        return dc != nullptr;
    }

    HDC Detach()
    {
        const HDC dc = m_hDC;
        m_hDC = nullptr;
        return dc;
    }

    /// Creates a memory context; null stands for the screen.
    BOOL CreateCompatibleDC(const CDC* dc)
    {
        return Attach(::CreateCompatibleDC(dc == nullptr ? nullptr : dc->m_hDC));
    }
    BOOL DeleteDC() { return m_hDC != nullptr && ::DeleteDC(Detach()); }

    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }

    HDC m_hDC = nullptr;
};

/// The base of the wrappers of bitmaps and palettes.
class CGdiObject
{
public:
    CGdiObject() = default;
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;
    virtual ~CGdiObject() { DeleteObject(); }

    BOOL Attach(HGDIOBJ object)
    {
        m_hObject = object;
        return object != nullptr;
    }

    HGDIOBJ Detach()
    {
        const HGDIOBJ object = m_hObject;
        m_hObject = nullptr;
        return object;
    }

    BOOL DeleteObject() { return m_hObject != nullptr && ::DeleteObject(Detach()); }

    HGDIOBJ GetSafeHandle() const { return m_hObject; }

    HGDIOBJ m_hObject = nullptr;
};

/// A device bitmap.
class CBitmap : public CGdiObject
{
public:
    /// `dc` must not be null.
    BOOL CreateCompatibleBitmap(const CDC* dc, int width, int height)
    {
        return Attach(::CreateCompatibleBitmap(dc->m_hDC, width, height));
    }

    operator HBITMAP() const { return static_cast<HBITMAP>(m_hObject); }
};

/// A palette.
class CPalette : public CGdiObject
{
public:
    BOOL CreatePalette(const LOGPALETTE* palette) { return Attach(::CreatePalette(palette)); }

    operator HPALETTE() const { return static_cast<HPALETTE>(m_hObject); }
};

/// @}

/// An image that can be drawn into device contexts and captured from them. The graphics calls are the
/// system's on Windows and those of SoftGdi.h elsewhere. Only copying throws. Contexts, bitmaps and palettes
/// that an operation creates for itself are released before it returns.
class ZELUTIL_API CWinDib : public virtual CTarvexDib
{
public:
    /// Copies a rectangle of `hdc`, in its logical coordinates, into this image, which gets 32 bits and the
    /// size of `rect`. Pixels outside the context are black, and an empty rectangle gives one black pixel.
    /// The fourth byte of a pixel is whatever the device delivers. On a palette device the colours are the
    /// first 255 entries of the system palette, or the whole system palette if there is no memory for a copy
    /// of them.
    ///
    /// If right < left or bottom < top, the result depends on the system (off Windows it is true, and all
    /// pixels but a row, a column or one pixel are black). Returns false, and leaves the image empty, if the
    /// context is invalid, if an extent does not fit an int, or if memory or handles run out.
    bool Capture(HDC const hdc, const CRect& rect);

    /// Makes a device bitmap for the screen from this picture; the caller deletes it with DeleteObject. An
    /// image of width or height 0 gives the system's stock bitmap. Returns null for an empty image, and if
    /// the bitmap cannot be made.
    HBITMAP CreateDDB() const;

    /// Reads a device bitmap of any depth into this image, which gets 32 bits and no colour table. If the
    /// bitmap's pixels are indices, their colours come from `palette`, or from the default palette if
    /// `palette` is null or holds no handle. Returns false, and leaves the image empty, if `bitmap` is null
    /// or holds no bitmap, if memory runs out, or if not every row could be read.
    bool CreateFromDDB(CBitmap* const bitmap, const CPalette* const palette);

    /// Draws the whole image, scaled to `width` x `height`, from (x, y) to the right and downward. A negative
    /// extent runs the other way and mirrors the image. The stretching mode and the palette are those that
    /// the caller has set in `hdc`. Draws nothing if the image is empty, if the device refuses, or if memory
    /// runs out.
    void StretchDraw(HDC const hdc, int x, int y, int width, int height) const;

    /// Draws a part of the image in the same way. `srcY` counts rows from the bottom of the picture: if the
    /// part's top row is y, it is Height() - y - srcHeight.
    void StretchDrawRect(HDC const hdc, int destX, int destY, int destWidth, int destHeight, int srcX,
                         int srcY, int srcWidth, int srcHeight) const;

private:
    class DeviceInfo;
};
