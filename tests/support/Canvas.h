#pragma once

#include "ZelUtil/WinDib.h"

#include <cstring>
#include <vector>

namespace test
{

/// Rows from the top; each pixel has blue in its low byte, then green, red and the fourth byte.
using Pixels = std::vector<std::uint32_t>;

/// The image at 32 bits; the fourth byte is 0 if the image has fewer.
inline Pixels PixelsOf(CTarvexDib dib)
{
    dib.ChangeToTrueColor(false);
    Pixels pixels(static_cast<std::size_t>(dib.Width() * dib.Height()));
    for (int i = 0; i < dib.Width() * dib.Height(); ++i)
        std::memcpy(pixels.data() + i, dib.GetPixelFast(i % dib.Width(), i / dib.Width()),
                    static_cast<std::size_t>(dib.PixelSize()));
    return pixels;
}

/// A memory context and the bitmap that is selected in it.
struct Canvas
{
    CBitmap bitmap;
    CDC dc;

    Canvas(int width, int height, int depth, const void* bits = nullptr)
    {
        bitmap.Attach(CreateBitmap(width, height, 1, static_cast<UINT>(depth), bits));
        dc.CreateCompatibleDC(nullptr);
        SelectObject(dc, bitmap.m_hObject);
    }

    CWinDib Read()
    {
        CWinDib dib;
        dib.CreateFromDDB(&bitmap, nullptr);
        return dib;
    }
};

} // namespace test
