#pragma once

#include "ZelUtil/SoftGdi.h"
#include "ZelUtil/TarvexDib.h"
#include "ZelUtil/WinTypes.h"

/// \name Wrappers of handles
/// With the names and the manner of the class library that Windows programs know, and no more than is needed
/// to hand such objects to CWinDib. One that holds a handle owns it, and deletes it with itself; none can be
/// copied. Attach and the Create functions are for objects that hold none.
/// @{

/// A rectangle: corners that are stored as they are given.
class CRect : public tagRECT
{
public:
    CRect() : tagRECT{0, 0, 0, 0} {}
    CRect(int l, int t, int r, int b) : tagRECT{l, t, r, b} {}
    CRect(const RECT& rect) : tagRECT(rect) {}

    /// Modulo 2^32: negative when the corners are the other way round.
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

    /// A wrapper of a context that stays its owner's: this thread's only one, so good until the next call.
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

    /// A context in memory; null stands for the screen.
    BOOL CreateCompatibleDC(const CDC* dc)
    {
        return Attach(::CreateCompatibleDC(dc == nullptr ? nullptr : dc->m_hDC));
    }
    BOOL DeleteDC() { return m_hDC != nullptr && ::DeleteDC(Detach()); }

    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }

    HDC m_hDC = nullptr;
};

/// What the wrappers of objects share: any object that a context selects.
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
    /// `dc` is not null.
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

/// An image that goes to device contexts and comes from them. The calls are those of the system on Windows,
/// and of SoftGdi.h elsewhere. No operation but copying throws; contexts, bitmaps and palettes that an
/// operation makes for itself are released before it ends.
class ZELUTIL_API CWinDib : public virtual CTarvexDib
{
public:
    /// Copies the rectangle of `hdc`, in its logical coordinates, into this image: 32 bits, as wide and high
    /// as `rect`. What lies outside the context is black; an empty rectangle gives one black pixel. The
    /// fourth byte is whatever the device delivers. On a palette device colours are those of the system
    /// palette's first 255 entries, or of its whole palette where memory for those runs out. What a
    /// rectangle with right left of left, or bottom above top, gives is up to the system (off Windows true,
    /// and an image that is black but for a row, a column or a pixel). False, with the image empty, for a bad
    /// context, extents beyond an int, and where memory or handles run out.
    bool Capture(HDC const hdc, const CRect& rect);

    /// A new device bitmap for the screen with this picture, which the caller deletes by DeleteObject. Null
    /// for an empty image and where it cannot be made. Without a row or column it is the system's stock
    /// bitmap.
    HBITMAP CreateDDB() const;

    /// Takes in a device bitmap, whatever its depth: 32 bits, no colour table. Where the bitmap's pixels are
    /// indices, their colours are those of `palette`, or of the default palette where that is null or holds
    /// no handle. False, with the image empty, for what is no bitmap, where memory runs out and where not
    /// every row could be read.
    bool CreateFromDDB(CBitmap* const bitmap, const CPalette* const palette);

    /// Draws the whole image, scaled to `width` x `height` with the upper left corner at (x, y); negative
    /// extents mirror. Stretching mode and palette are those that the caller has set in `hdc`. Nothing
    /// happens for an empty image, where the device refuses and where memory runs out.
    void StretchDraw(HDC const hdc, int x, int y, int width, int height) const;

    /// The same for a part of the image. `srcY` counts rows from the bottom of the picture: for a part whose
    /// top row is y it is Height() - y - srcHeight.
    void StretchDrawRect(HDC const hdc, int destX, int destY, int destWidth, int destHeight, int srcX,
                         int srcY, int srcWidth, int srcHeight) const;

private:
    class DeviceInfo;
};
