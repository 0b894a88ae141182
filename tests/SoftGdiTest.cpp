#include "ZelUtil/WinDib.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace
{

// A palette device for as long as this object lives; colour i is (i, 255 - i, i / 2), but for a white one.
struct PaletteScreen
{
    PaletteScreen()
    {
        std::vector<PALETTEENTRY> colors;
        for (int i = 0; i < 256; ++i)
            colors.push_back({static_cast<BYTE>(i), static_cast<BYTE>(255 - i), static_cast<BYTE>(i / 2), 0});
        colors[200] = {255, 255, 255, 0};
        EXPECT_TRUE(SetSoftScreen(640, 480, 8, colors.data(), 256));
    }

    ~PaletteScreen() { SetSoftScreen(1024, 768, 32, nullptr, 0); }
};

std::uint32_t PixelAt(const CTarvexDib& dib, int x, int y)
{
    std::uint32_t pixel;
    std::memcpy(&pixel, dib.GetPixelFast(x, y), 4);
    return pixel;
}

} // namespace

TEST(SoftGdi, PaletteDevicesStoreIndices)
{
    const PaletteScreen palette;
    CDC memory;
    CBitmap bitmap;
    const HDC screen = GetDC(nullptr);
    ASSERT_TRUE(memory.CreateCompatibleDC(nullptr) && bitmap.Attach(CreateCompatibleBitmap(screen, 4, 1)));
    ReleaseDC(nullptr, screen);
    EXPECT_EQ(GetDeviceCaps(memory, RASTERCAPS), 0xBF99);
    EXPECT_EQ(GetDeviceCaps(memory, BITSPIXEL), 8);
    EXPECT_EQ(GetDeviceCaps(memory, SIZEPALETTE), 256);
    EXPECT_EQ(GetDeviceCaps(memory, HORZRES), 640);
    EXPECT_EQ(GetDeviceCaps(memory, VERTRES), 480);
    PALETTEENTRY entries[300] = {};
    EXPECT_EQ(GetSystemPaletteEntries(memory, 300, 5, entries), 0U);
    EXPECT_EQ(GetSystemPaletteEntries(memory, 250, 300, entries), 6U);
    EXPECT_TRUE(entries[5].peRed == 255 && entries[5].peGreen == 0 && entries[6].peGreen == 0);

    const HGDIOBJ stock = SelectObject(memory, bitmap.m_hObject);
    ASSERT_NE(stock, nullptr);
    const COLORREF colors[] = {0x00FF00, 0x329B64, 0x7F00FF, 0xFF0000};
    for (int x = 0; x < 4; ++x)
        SetPixel(memory, x, 0, colors[x]);
    EXPECT_EQ(GetPixel(memory, 0, 0), 0x00FF00U); // entry 0: green
    EXPECT_EQ(GetPixel(memory, 1, 0), 0x329B64U); // entry 100
    EXPECT_EQ(GetPixel(memory, 2, 0), 0x7F00FFU); // entry 255

    // Copied to a bitmap of one bit, it is colours that count.
    CDC other;
    CBitmap mono;
    ASSERT_TRUE(other.CreateCompatibleDC(nullptr) && mono.Attach(CreateBitmap(4, 1, 1, 1, nullptr)));
    SetPixel(memory, 3, 0, 0xFFFFFF);
    SelectObject(other, mono.m_hObject);
    EXPECT_TRUE(BitBlt(other, 0, 0, 4, 1, memory, 0, 0, SRCCOPY));
    EXPECT_TRUE(GetPixel(other, 3, 0) == 0xFFFFFFU && GetPixel(other, 2, 0) == 0);
    SelectObject(other, stock);

    // A captured picture has the colours of the first 255 entries; the last index has none.
    CWinDib dib;
    ASSERT_TRUE(dib.Capture(memory, CRect(0, 0, 4, 1)));
    EXPECT_EQ(dib.BitCount(), 32);
    EXPECT_EQ(PixelAt(dib, 0, 0), 0x00FF00U);
    EXPECT_EQ(PixelAt(dib, 1, 0), 0x649B32U);
    EXPECT_EQ(PixelAt(dib, 2, 0), 0U);

    // With the default palette it is the screen's colours that count.
    SelectObject(memory, stock);
    ASSERT_TRUE(dib.CreateFromDDB(&bitmap, nullptr));
    EXPECT_EQ(PixelAt(dib, 2, 0), 0xFF007FU);

    // An image drawn there takes the nearest colours.
    ASSERT_TRUE(dib.Create(1, 1, 24));
    const unsigned char pixel[] = {49, 156, 99}; // blue, green, red: next to entry 99
    std::memcpy(dib.GetPixelFast(0, 0), pixel, 3);
    SelectObject(memory, bitmap.m_hObject);
    dib.StretchDraw(memory, 0, 0, 4, 1);
    EXPECT_EQ(GetPixel(memory, 3, 0), 0x319C63U);
    SelectObject(memory, stock);
    CBitmap made;
    ASSERT_TRUE(made.Attach(dib.CreateDDB()));
    BITMAP description;
    GetObject(made.m_hObject, sizeof description, &description);
    EXPECT_EQ(description.bmBitsPixel, 8);
}

TEST(SoftGdi, ScreensThatCannotBeAreRefused)
{
    const PALETTEENTRY color = {};
    EXPECT_FALSE(SetSoftScreen(0, 5, 32, nullptr, 0) || SetSoftScreen(5, -1, 32, nullptr, 0) ||
                 SetSoftScreen(5, 5, 16, nullptr, 0) || SetSoftScreen(5, 5, 8, nullptr, 1) ||
                 SetSoftScreen(5, 5, 8, &color, 0) || SetSoftScreen(5, 5, 8, &color, 257));
    const HDC screen = GetDC(nullptr);
    EXPECT_TRUE(GetDeviceCaps(screen, HORZRES) == 1024 && GetDeviceCaps(screen, BITSPIXEL) == 32);
    EXPECT_EQ(GetDeviceCaps(screen, RASTERCAPS), 0xBE99);
    ReleaseDC(nullptr, screen);
}

TEST(SoftGdi, ExtentsOfAnySizeCostOnlyWhatIsSeen)
{
    CWinDib dib;
    ASSERT_TRUE(dib.Create(3, 3, 32));
    CDC memory;
    CBitmap bitmap;
    const HDC screen = GetDC(nullptr);
    ASSERT_TRUE(memory.CreateCompatibleDC(nullptr) && bitmap.Attach(CreateCompatibleBitmap(screen, 8, 8)));
    EXPECT_EQ(CreateCompatibleBitmap(screen, 40000, 40000), nullptr);
    ReleaseDC(nullptr, screen);
    const HGDIOBJ stock = SelectObject(memory, bitmap.m_hObject);
    const int extremes[] = {INT_MIN, INT_MIN + 1, -2000000, -3, -1, 0, 1, 5, 2000000, INT_MAX};
    EXPECT_EQ(SetPixel(memory, 3, 3, 0xFF123456), 0x123456U); // a high byte counts for nothing
    for (const int at : extremes)
        for (const int extent : extremes)
        {
            dib.StretchDraw(memory, at, 2, extent, extent);
            dib.StretchDrawRect(memory, 2, at, 4, extent, at, 0, 3, extent);
            dib.StretchDrawRect(memory, 0, 0, extent, 4, 0, at, extent, 3);
            BitBlt(memory, at, extent, extent, at, memory, extent, at, SRCCOPY);
        }

    // Nothing is drawn beyond a bitmap, on the screen or from it.
    const HDC other = GetDC(nullptr);
    EXPECT_TRUE(SetPixel(memory, 8, 0, 1) == 0 && SetPixel(other, 0, 0, 1) == 0);
    EXPECT_TRUE(GetPixel(other, 0, 0) == CLR_INVALID && !BitBlt(memory, 0, 0, 2, 2, other, 0, 0, SRCCOPY));
    ReleaseDC(nullptr, other);

    // An extent of 2^31, from its far end: the source's first and only white pixel.
    std::memset(dib.GetScanLine(0), 0, 36);
    std::memset(dib.GetPixelFast(0, 0), 255, 4);
    dib.StretchDraw(memory, 7, 7, INT_MIN, INT_MIN);
    EXPECT_EQ(GetPixel(memory, 7, 7), 0xFFFFFFU);
    SelectObject(memory, stock);
}
