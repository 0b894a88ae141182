#include "ZelUtil/WinDib.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

// The header block as the platform reads it, with as many colours as the header announces. An image may hold
// fewer, if its table was shortened or a file brought none. Then this is a copy, in which the missing colours
// are black.
class CWinDib::DeviceInfo
{
public:
    explicit DeviceInfo(const CWinDib& dib) : m_info(dib.m_info)
    {
        const auto bytes = static_cast<std::size_t>(dib.m_headerBytes);
        const std::size_t needed = sizeof(BITMAPINFOHEADER) + AnnouncedColors(dib) * sizeof(tagRGBQUAD);
        if (needed <= bytes)
            return;

        m_copy.reset(new (std::nothrow) unsigned char[needed]());
        m_info = reinterpret_cast<const BITMAPINFO*>(m_copy.get());
        if (m_copy != nullptr)
            std::memcpy(m_copy.get(), dib.m_info, bytes);
    }

    /// Null if memory ran out.
    const BITMAPINFO* Get() const { return m_info; }

private:
    static std::size_t AnnouncedColors(const CWinDib& dib)
    {
        const auto full = static_cast<std::size_t>(dib.GetNumColors(dib.BitCount()));
        const std::size_t used = dib.m_header->biClrUsed;
        return used == 0 || used > full ? full : used;
    }

    std::unique_ptr<unsigned char[]> m_copy;
    const BITMAPINFO* m_info;
};

bool CWinDib::Capture(HDC const hdc, const CRect& rect)
{
    constexpr WORD kPaletteVersion = 0x300;
    constexpr UINT kEntries = 255;

    const std::int64_t width = std::int64_t{rect.right} - rect.left;
    const std::int64_t height = std::int64_t{rect.bottom} - rect.top;
    if (width != rect.Width() || height != rect.Height())
    {
        Empty();
        return false;
    }

    CDC memory;
    memory.Attach(CreateCompatibleDC(hdc));
    CBitmap bitmap;
    bitmap.Attach(CreateCompatibleBitmap(hdc, rect.Width(), rect.Height()));
    const HGDIOBJ previous = SelectObject(memory, bitmap.GetSafeHandle());
    BitBlt(memory, 0, 0, rect.Width(), rect.Height(), hdc, static_cast<int>(rect.left),
           static_cast<int>(rect.top), SRCCOPY);
    SelectObject(memory, previous);

    CPalette palette;
    if ((GetDeviceCaps(hdc, RASTERCAPS) & RC_PALETTE) != 0)
    {
        alignas(LOGPALETTE) unsigned char block[sizeof(LOGPALETTE) + 256 * sizeof(PALETTEENTRY)];
        auto* const colors = reinterpret_cast<LOGPALETTE*>(block);
        colors->palVersion = kPaletteVersion;
        colors->palNumEntries =
            static_cast<WORD>(GetSystemPaletteEntries(hdc, 0, kEntries, colors->palPalEntry));
        palette.CreatePalette(colors);
    }
    return CreateFromDDB(&bitmap, &palette);
}

HBITMAP CWinDib::CreateDDB() const
{
    if (m_bits == nullptr)
        return nullptr;
    const DeviceInfo info(*this);
    if (info.Get() == nullptr)
        return nullptr;

    const HDC screen = GetDC(nullptr);
    if (screen == nullptr)
        return nullptr;
    const HBITMAP bitmap = CreateDIBitmap(screen, m_header, CBM_INIT, m_bits, info.Get(), DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return bitmap;
}

bool CWinDib::CreateFromDDB(CBitmap* const bitmap, const CPalette* const palette)
{
    Empty();
    BITMAP description;
    constexpr int kSize = sizeof description;
    if (bitmap == nullptr || GetObject(bitmap->GetSafeHandle(), kSize, &description) != kSize)
        return false;
    if (!Create(static_cast<int>(description.bmWidth), static_cast<int>(description.bmHeight), 32))
        return false;
    m_header->biSizeImage = static_cast<DWORD>(m_imageSize);

    const bool hasPalette = palette != nullptr && palette->GetSafeHandle() != nullptr;
    const HPALETTE chosen = hasPalette ? *palette : static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE));
    const HDC screen = GetDC(nullptr);
    const HPALETTE previous = SelectPalette(screen, chosen, FALSE);
    RealizePalette(screen);
    const int lines =
        GetDIBits(screen, *bitmap, 0, static_cast<UINT>(m_height), m_bits, m_info, DIB_RGB_COLORS);
    SelectPalette(screen, previous, TRUE);
    RealizePalette(screen);
    ReleaseDC(nullptr, screen);

    if (lines == m_height)
        return true;
    Empty();
    return false;
}

void CWinDib::StretchDraw(HDC const hdc, int x, int y, int width, int height) const
{
    StretchDrawRect(hdc, x, y, width, height, 0, 0, Width(), Height());
}

void CWinDib::StretchDrawRect(HDC const hdc, int destX, int destY, int destWidth, int destHeight, int srcX,
                              int srcY, int srcWidth, int srcHeight) const
{
    if (m_bits == nullptr)
        return;
    const DeviceInfo info(*this);
    if (info.Get() != nullptr)
        StretchDIBits(hdc, destX, destY, destWidth, destHeight, srcX, srcY, srcWidth, srcHeight, m_bits,
                      info.Get(), DIB_RGB_COLORS, SRCCOPY);
}
