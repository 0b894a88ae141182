#include "ZelUtil/WinDib.h"

#include <gtest/gtest.h>

// The graphics calls themselves: the same on Windows and over memory.

namespace
{

HGDIOBJ const kForeign = reinterpret_cast<HGDIOBJ>(static_cast<std::size_t>(0x7FF0FFF0));

} // namespace

TEST(Gdi, HandlesEndWithTheirObjects)
{
    const HDC screen = GetDC(nullptr), other = GetDC(nullptr);
    ASSERT_TRUE(screen != nullptr && other != nullptr && screen != other);
    EXPECT_EQ(ReleaseDC(nullptr, other), 1);
    EXPECT_EQ(ReleaseDC(nullptr, other), 0);
    EXPECT_EQ(ReleaseDC(nullptr, nullptr), 0);

    const HDC memory = CreateCompatibleDC(screen), second = CreateCompatibleDC(memory);
    ASSERT_TRUE(memory != nullptr && second != nullptr);
    EXPECT_EQ(ReleaseDC(nullptr, memory), 0);
    EXPECT_EQ(GetDeviceCaps(memory, BITSPIXEL), 32);
    EXPECT_EQ(GetDeviceCaps(memory, PLANES), 1);
    EXPECT_EQ(GetDeviceCaps(screen, RASTERCAPS) & RC_PALETTE, 0);
    EXPECT_EQ(GetSystemPaletteEntries(screen, 0, 255, nullptr), 0U);

    const HBITMAP bitmap = CreateCompatibleBitmap(screen, 4, -3), mono = CreateCompatibleBitmap(memory, 9, 2);
    BITMAP description;
    ASSERT_EQ(GetObject(bitmap, sizeof description, &description), static_cast<int>(sizeof description));
    EXPECT_TRUE(description.bmType == 0 && description.bmWidth == 4 && description.bmHeight == 3 &&
                description.bmWidthBytes == 16 && description.bmPlanes == 1 &&
                description.bmBitsPixel == 32 && description.bmBits == nullptr);
    EXPECT_EQ(GetObject(bitmap, 4, &description), 0);
    EXPECT_EQ(GetObject(mono, 100, &description), static_cast<int>(sizeof description));
    EXPECT_TRUE(description.bmBitsPixel == 1 && description.bmWidthBytes == 2);

    const HGDIOBJ stock = SelectObject(memory, bitmap);
    ASSERT_NE(stock, nullptr);
    EXPECT_EQ(SelectObject(memory, bitmap), bitmap);
    EXPECT_EQ(SelectObject(second, bitmap), nullptr); // it is elsewhere
    EXPECT_EQ(SelectObject(second, mono), stock);     // one for all
    EXPECT_EQ(SelectObject(screen, mono), nullptr);
    EXPECT_EQ(CreateCompatibleBitmap(screen, 0, 5), stock);
    EXPECT_TRUE(DeleteObject(stock) && DeleteObject(stock));

    EXPECT_TRUE(DeleteObject(bitmap) && DeleteObject(bitmap)); // lives on while it is selected
    EXPECT_NE(GetObject(bitmap, sizeof description, &description), 0);
    EXPECT_EQ(SelectObject(memory, stock), bitmap);
    EXPECT_EQ(GetObject(bitmap, sizeof description, &description), 0);
    EXPECT_FALSE(DeleteObject(bitmap));

    EXPECT_TRUE(DeleteDC(second));
    EXPECT_FALSE(DeleteDC(second));
    EXPECT_NE(GetObject(mono, sizeof description, &description), 0); // deselected, not deleted
    EXPECT_TRUE(DeleteObject(mono));
    EXPECT_TRUE(DeleteObject(memory)); // as DeleteDC
    EXPECT_FALSE(DeleteObject(memory));
    EXPECT_EQ(CreateCompatibleDC(memory), nullptr);
    EXPECT_TRUE(DeleteDC(screen));
    EXPECT_EQ(ReleaseDC(nullptr, screen), 0);
}

TEST(Gdi, WrongHandlesFail)
{
    const HBITMAP bitmap = CreateBitmap(2, 2, 1, 32, nullptr);
    const auto palette = static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE));
    const HDC memory = CreateCompatibleDC(nullptr);
    unsigned char bytes[16] = {};
    BITMAPINFO info = {};
    info.bmiHeader = {40, 2, 2, 1, 32, 0, 0, 0, 0, 0, 0};
    for (HGDIOBJ const wrong : {HGDIOBJ{nullptr}, kForeign, HGDIOBJ{bitmap}, HGDIOBJ{palette}})
    {
        const HDC dc = static_cast<HDC>(wrong);
        EXPECT_TRUE(!DeleteDC(dc) && ReleaseDC(nullptr, dc) == 0 && GetDeviceCaps(dc, RASTERCAPS) == 0);
        EXPECT_TRUE(GetStretchBltMode(dc) == 0 && SetStretchBltMode(dc, 3) == 0);
        EXPECT_TRUE(CreateCompatibleBitmap(dc, 2, 2) == nullptr && SelectObject(dc, bitmap) == nullptr);
        EXPECT_EQ(StretchDIBits(dc, 0, 0, 2, 2, 0, 0, 2, 2, bytes, &info, DIB_RGB_COLORS, SRCCOPY), 0);
        EXPECT_EQ(GetDIBits(dc, bitmap, 0, 2, bytes, &info, DIB_RGB_COLORS), 0);
        EXPECT_TRUE(GetPixel(dc, 0, 0) == CLR_INVALID && SetPixel(dc, 0, 0, 1) == CLR_INVALID);
        EXPECT_TRUE(!BitBlt(dc, 0, 0, 1, 1, memory, 0, 0, SRCCOPY) &&
                    !BitBlt(memory, 0, 0, 1, 1, dc, 0, 0, SRCCOPY));
        EXPECT_TRUE(SelectPalette(dc, palette, FALSE) == nullptr && RealizePalette(dc) == 0);
        if (wrong == bitmap)
            continue;
        EXPECT_EQ(GetDIBits(memory, static_cast<HBITMAP>(wrong), 0, 2, bytes, &info, DIB_RGB_COLORS), 0);
        EXPECT_EQ(SelectObject(memory, wrong), nullptr);
        if (wrong == palette)
            continue;
        EXPECT_TRUE(!DeleteObject(wrong) &&
                    SelectPalette(memory, static_cast<HPALETTE>(wrong), FALSE) == nullptr);
    }
    EXPECT_EQ(SetStretchBltMode(memory, 5), 0);
    EXPECT_EQ(GetStretchBltMode(memory), BLACKONWHITE);

    const auto draws = [&](const BITMAPINFO* header, const void* bits)
    { return StretchDIBits(memory, 0, 0, 2, 2, 0, 0, 2, 2, bits, header, DIB_RGB_COLORS, SRCCOPY); };
    EXPECT_EQ(draws(&info, bytes), 2);
    EXPECT_TRUE(draws(nullptr, bytes) == 0 && draws(&info, nullptr) == 0);
    for (const auto& spoil :
         {+[](BITMAPINFOHEADER& h) { h.biSize = 39; }, +[](BITMAPINFOHEADER& h) { h.biPlanes = 0; },
          +[](BITMAPINFOHEADER& h) { h.biCompression = 1; }, +[](BITMAPINFOHEADER& h) { h.biBitCount = 5; },
          +[](BITMAPINFOHEADER& h) { h.biWidth = 0; }, +[](BITMAPINFOHEADER& h) { h.biHeight = 0; }})
    {
        BITMAPINFO bad = info;
        spoil(bad.bmiHeader);
        EXPECT_EQ(draws(&bad, bytes), 0);
    }
    DeleteDC(memory);
    DeleteObject(bitmap);
}

TEST(Gdi, PixelsAreSetAndCopied)
{
    const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen), mono = CreateCompatibleDC(screen);
    const std::uint32_t pixels[] = {0x11010203, 0x00FFFFFF, 0x33808080, 0x44000000};
    const HBITMAP bitmap = CreateBitmap(2, 2, 1, 32, pixels), bits = CreateBitmap(2, 2, 1, 1, nullptr);
    const HGDIOBJ stock = SelectObject(memory, bitmap);
    SelectObject(mono, bits);

    EXPECT_EQ(GetPixel(memory, 0, 0), 0x030201U); // red is lowest
    EXPECT_EQ(GetPixel(memory, 2, 0), CLR_INVALID);
    EXPECT_EQ(GetPixel(memory, 0, -1), CLR_INVALID);
    EXPECT_EQ(BitBlt(mono, 0, 0, 2, 2, memory, 0, 0, SRCCOPY), TRUE);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(GetPixel(mono, i % 2, i / 2), i == 1 ? 0xFFFFFFU : 0U)
            << i; // white stays white, all else is black
    EXPECT_EQ(SetPixel(memory, 1, 1, 0x0A0B0C), 0x0A0B0CU);
    EXPECT_EQ(GetPixel(memory, 1, 1), 0x0A0B0CU);
    EXPECT_EQ(SetPixel(mono, 0, 0, 0xFFFFFF), 0xFFFFFFU);
    EXPECT_EQ(BitBlt(memory, 0, 0, 1, 1, mono, 0, 0, SRCCOPY), TRUE);
    EXPECT_EQ(GetPixel(memory, 0, 0), 0xFFFFFFU);

    // Within one bitmap, one pixel right and down; negative extents reach back.
    EXPECT_EQ(BitBlt(memory, 1, 1, -2, -2, memory, 0, 0, SRCCOPY), TRUE);
    EXPECT_EQ(GetPixel(memory, 1, 1), 0xFFFFFFU);
    EXPECT_EQ(GetPixel(memory, 1, 0), 0xFFFFFFU); // as it was
    EXPECT_EQ(BitBlt(memory, 0, 0, 0, 2, memory, 0, 0, SRCCOPY), TRUE);
    EXPECT_EQ(BitBlt(screen, 0, 0, 2, 2, memory, 0, 0, SRCCOPY), TRUE);

    // Some rows, from the bottom.
    BITMAPINFO info = {};
    info.bmiHeader = {40, 2, 2, 1, 32, 0, 0, 0, 0, 0, 0};
    std::uint32_t read[4] = {5, 5, 5, 5};
    EXPECT_EQ(GetDIBits(screen, bitmap, 1, 7, read, &info, DIB_RGB_COLORS), 1);
    EXPECT_TRUE(read[1] == 0x00FFFFFF && read[2] == 5) << std::hex << read[1] << " " << read[2];
    EXPECT_EQ(info.bmiHeader.biSizeImage, 16U);

    SelectObject(memory, stock);
    SelectObject(mono, stock);
    EXPECT_TRUE(DeleteObject(bitmap) && DeleteObject(bits) && DeleteDC(memory) && DeleteDC(mono));
    ReleaseDC(nullptr, screen);
}

TEST(Gdi, PalettesStayUsableWhileSelected)
{
    struct
    {
        LOGPALETTE palette;
        PALETTEENTRY more[9];
    } colors = {{0x300, 10, {{1, 2, 3, 0}}}, {}};
    const HPALETTE palette = CreatePalette(&colors.palette);
    ASSERT_NE(palette, nullptr);
    EXPECT_EQ(CreatePalette(nullptr), nullptr);
    WORD entries = 0;
    EXPECT_EQ(GetObject(palette, sizeof entries, &entries), 2);
    EXPECT_EQ(entries, 10);
    EXPECT_EQ(GetObject(GetStockObject(DEFAULT_PALETTE), sizeof entries, &entries), 2);
    EXPECT_EQ(entries, 20);
    EXPECT_EQ(GetStockObject(99), nullptr);

    const HDC memory = CreateCompatibleDC(nullptr);
    EXPECT_EQ(SelectPalette(memory, palette, FALSE), GetStockObject(DEFAULT_PALETTE));
    EXPECT_EQ(RealizePalette(memory), 0U);
    EXPECT_EQ(SelectObject(memory, palette), nullptr);
    EXPECT_TRUE(DeleteObject(palette));
    EXPECT_FALSE(DeleteObject(palette));
    EXPECT_EQ(SelectPalette(memory, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), TRUE), palette);
    EXPECT_TRUE(DeleteDC(memory));
}

TEST(Gdi, EdgesOfTheCalls)
{
    const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateBitmap(2, 3, 1, 32, nullptr);
    const HGDIOBJ stock = SelectObject(memory, bitmap);
    BITMAPINFO info = {};
    info.bmiHeader = {40, 2, 2, 1, 32, 0, 0, 0, 0, 0, 0};
    const std::uint32_t picture[] = {1, 2, 3, 4}; // the bottom row is 1 2
    const auto stretch =
        [&](HDC dc, int x, int width, int height, int srcX, int srcY, int srcWidth, int srcHeight)
    {
        return StretchDIBits(dc, x, 0, width, height, srcX, srcY, srcWidth, srcHeight, picture, &info,
                             DIB_RGB_COLORS, SRCCOPY);
    };
    const auto blue = [&](int x, int y) { return GetPixel(memory, x, y) >> 16; };

    EXPECT_EQ(stretch(screen, 0, 1, 1, 0, 0, 2, 2), 2);
    EXPECT_EQ(stretch(screen, 0, 1, 1, 0, 2, 2, 2), 0);
    EXPECT_EQ(stretch(memory, 9, 1, 1, 0, 0, 2, 2), 2);
    EXPECT_EQ(stretch(memory, -2, 4, 1, -2, 0, 4, 1), 2);
    EXPECT_TRUE(blue(0, 0) == 1 && blue(1, 0) == 2);
    EXPECT_EQ(stretch(memory, 0, 2, 2, 1, 1, -2, 2), 2); // columns backwards, rows from the second upward
    EXPECT_TRUE(blue(0, 0) == 1 && blue(0, 1) == 4 && blue(1, 1) == 3);
    info.bmiHeader.biHeight = -2; // rows from the top
    EXPECT_EQ(stretch(memory, 0, 2, 2, 0, 0, 2, 2), 2);
    EXPECT_TRUE(blue(0, 0) == 1 && blue(1, 1) == 4);
    std::uint32_t read[6] = {};
    info.bmiHeader.biHeight = -3;
    EXPECT_EQ(GetDIBits(screen, bitmap, 0, 3, read, &info, DIB_RGB_COLORS), 3);
    EXPECT_TRUE(read[0] == 1 && read[3] == 4);
    info.bmiHeader.biHeight = 3;
    EXPECT_EQ(GetDIBits(screen, bitmap, 0, 1, read, &info, DIB_RGB_COLORS), 1);
    info.bmiHeader.biHeight = 2;

    // Within one bitmap, down and to the right.
    for (int y = 0; y < 3; ++y)
        SetPixel(memory, 0, y, static_cast<COLORREF>((y + 1) << 16));
    EXPECT_TRUE(BitBlt(memory, 0, 1, 1, 2, memory, 0, 0, SRCCOPY));
    EXPECT_TRUE(blue(0, 0) == 1 && blue(0, 1) == 1 && blue(0, 2) == 2);
    EXPECT_TRUE(BitBlt(memory, 1, 0, 1, 3, memory, 0, 0, SRCCOPY));
    EXPECT_EQ(blue(1, 2), 2U);

    BITMAP description;
    EXPECT_EQ(GetObject(bitmap, 0, nullptr), static_cast<int>(sizeof description));
    const HBITMAP mono = CreateDIBitmap(nullptr, &info.bmiHeader, 0, nullptr, &info, DIB_RGB_COLORS);
    GetObject(mono, sizeof description, &description);
    EXPECT_EQ(description.bmBitsPixel, 1);
    const HBITMAP blank = CreateDIBitmap(screen, &info.bmiHeader, 0, nullptr, &info, DIB_RGB_COLORS);
    EXPECT_NE(blank, nullptr);
    SelectObject(memory, mono);
    EXPECT_EQ(SetPixel(memory, 0, 0, 0x808080), 0xFFFFFFU);
    EXPECT_EQ(SetPixel(memory, 0, 0, 0x7F7F7F), 0U);
    SelectObject(memory, stock);
    EXPECT_EQ(
        CreateDIBitmap(static_cast<HDC>(kForeign), &info.bmiHeader, CBM_INIT, picture, &info, DIB_RGB_COLORS),
        nullptr);
    info.bmiHeader.biWidth = -2;
    EXPECT_EQ(CreateDIBitmap(screen, &info.bmiHeader, CBM_INIT, picture, &info, DIB_RGB_COLORS), nullptr);
    const HBITMAP words = CreateBitmap(1, 1, 1, 16, nullptr);
    EXPECT_EQ(SelectObject(memory, words), nullptr);
    EXPECT_EQ(SetStretchBltMode(memory, HALFTONE), BLACKONWHITE);
    for (const HBITMAP made : {bitmap, mono, blank, words})
        EXPECT_TRUE(DeleteObject(made));
    EXPECT_TRUE(DeleteObject(GetStockObject(DEFAULT_PALETTE)));
    EXPECT_TRUE(DeleteObject(GetStockObject(DEFAULT_PALETTE)));
    EXPECT_TRUE(DeleteDC(memory) && ReleaseDC(nullptr, screen) == 1);
}
