// The graphics calls themselves: the same on Windows and in memory.

#include "Canvas.h"

#include <gtest/gtest.h>

using namespace test;

static BITMAPINFO Info(int width, int height, WORD bits = 32, WORD planes = 1, DWORD size = 40,
                       DWORD packing = 0)
{
    return {{size, width, height, planes, bits, packing, 0, 0, 0, 0, 0}, {}};
}

static int Stretch(HDC dc, int x, int srcX, const Pixels& pixels, const BITMAPINFO& info)
{
    return StretchDIBits(dc, x, 0, 2, 2, srcX, 0, 2, 2, pixels.data(), &info, DIB_RGB_COLORS, SRCCOPY);
}

static int Read(HDC dc, HGDIOBJ bitmap, UINT start, UINT lines, Pixels& pixels, BITMAPINFO info)
{
    return GetDIBits(dc, static_cast<HBITMAP>(bitmap), start, lines, pixels.data(), &info, DIB_RGB_COLORS);
}

TEST(Gdi, HandlesOfAnotherKindAreRefused)
{
    Canvas canvas(2, 2, 32);
    HGDIOBJ const bitmap = canvas.bitmap.m_hObject,
                  foreign = reinterpret_cast<HGDIOBJ>(std::size_t{0x7FF0FFF0});
    const auto palette = static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE));
    const HDC screen = GetDC(nullptr), stale = CreateCompatibleDC(screen);
    EXPECT_TRUE(DeleteDC(stale));
    CDC more[100]; // one of them takes the stale one's place
    for (CDC& dc : more)
        EXPECT_TRUE(dc.CreateCompatibleDC(nullptr));
    Pixels bits(4);
    for (HGDIOBJ const handle : {HGDIOBJ{}, foreign, HGDIOBJ{stale}, HGDIOBJ{palette}})
    {
        const auto dc = static_cast<HDC>(handle);
        CBitmap wrapper;
        wrapper.m_hObject = handle;
        EXPECT_FALSE(GetDeviceCaps(dc, PLANES) || DeleteDC(dc) || ReleaseDC(nullptr, dc) ||
                     GetStretchBltMode(dc) || SetStretchBltMode(dc, COLORONCOLOR) ||
                     SelectObject(dc, bitmap) || CreateCompatibleBitmap(dc, 1, 1) ||
                     SelectPalette(dc, palette, FALSE) || CWinDib().Capture(dc, CRect(0, 0, 1, 1)) ||
                     BitBlt(dc, 0, 0, 1, 1, canvas.dc, 0, 0, SRCCOPY) ||
                     BitBlt(canvas.dc, 0, 0, 1, 1, dc, 0, 0, SRCCOPY) ||
                     Stretch(dc, 0, 0, bits, Info(2, 2)) || Read(dc, bitmap, 0, 2, bits, Info(2, 2)));
        EXPECT_FALSE(CWinDib().CreateFromDDB(&wrapper, nullptr) || SelectObject(more[0], wrapper.Detach()) ||
                     Read(screen, handle, 0, 2, bits, Info(2, 2)));
        EXPECT_TRUE(GetPixel(dc, 0, 0) == CLR_INVALID && SetPixel(dc, 0, 0, 1) == CLR_INVALID &&
                    GetObject(handle, 2, bits.data()) == (handle == palette ? 2 : 0));
    }
    EXPECT_FALSE(SelectPalette(more[0], static_cast<HPALETTE>(bitmap), TRUE) || CreateCompatibleDC(stale) ||
                 DeleteObject(nullptr) || DeleteObject(stale) || SelectObject(screen, bitmap) ||
                 ReleaseDC(nullptr, more[0]));
    EXPECT_TRUE(Stretch(screen, 0, 0, bits, Info(2, 2)) == 2 && SetPixel(screen, 0, 0, 0) == 0 &&
                BitBlt(screen, 0, 0, 1, 1, canvas.dc, 0, 0, SRCCOPY) && ReleaseDC(nullptr, screen) &&
                !ReleaseDC(nullptr, screen));
}

TEST(Gdi, ObjectsLiveUntilTheyAreDeletedAndDeselected)
{
    Canvas canvas(4, 3, 32), mono(9, 2, 1), words(1, 1, 16);
    HGDIOBJ const bitmap = canvas.bitmap.m_hObject, stock = CreateBitmap(0, 5, 1, 32, nullptr);
    EXPECT_FALSE(CreateCompatibleBitmap(canvas.dc, 40000, 40000) || SelectObject(mono.dc, bitmap) ||
                 SelectObject(words.dc, words.bitmap.m_hObject));
    EXPECT_TRUE(SelectObject(canvas.dc, bitmap) == bitmap && DeleteObject(bitmap) && DeleteObject(bitmap) &&
                GetObject(bitmap, 0, nullptr) != 0 && SelectObject(canvas.dc, stock) == bitmap);
    EXPECT_TRUE(GetObject(bitmap, 0, nullptr) == 0 && !DeleteObject(bitmap));
    EXPECT_TRUE(DeleteObject(mono.dc.Detach()) && SelectObject(canvas.dc, mono.bitmap.m_hObject) == stock);

    CBitmap like;
    BITMAP record;
    EXPECT_TRUE(like.CreateCompatibleBitmap(&canvas.dc, -9, 2)); // like the bitmap that is selected
    EXPECT_TRUE(!GetObject(like.m_hObject, sizeof record - 1, &record) &&
                GetObject(like.m_hObject, 100, &record));
    EXPECT_TRUE(record.bmWidth == 9 && record.bmHeight == 2 && record.bmWidthBytes == 2 &&
                record.bmBitsPixel == 1 && record.bmPlanes == 1 && record.bmBits == nullptr);

    const LOGPALETTE colors = {0x300, 1, {{1, 2, 3, 0}}};
    const HPALETTE palette = CreatePalette(&colors), standard = SelectPalette(canvas.dc, palette, FALSE);
    WORD entries = 0;
    EXPECT_TRUE(GetObject(palette, 2, &entries) == 2 && entries == 1 && !CreatePalette(nullptr));
    EXPECT_TRUE(DeleteObject(palette) && !DeleteObject(palette) &&
                SelectPalette(canvas.dc, standard, TRUE) == palette);
    EXPECT_TRUE(DeleteObject(stock) && DeleteObject(stock) && DeleteObject(standard) &&
                GetStockObject(DEFAULT_PALETTE) == standard && GetStockObject(99) == nullptr);
}

TEST(Gdi, PixelsAreWrittenAndRead)
{
    const Pixels pixels = {1, 2, 0x7F7F7F, 0x808080};
    Canvas canvas(2, 2, 32), mono(2, 1, 1);
    for (const BITMAPINFO& info : {Info(0, 2), Info(2, 0), Info(2, 2, 5), Info(2, 2, 32, 0),
                                   Info(2, 2, 32, 1, 39), Info(2, 2, 32, 1, 40, 1)})
        EXPECT_EQ(Stretch(canvas.dc, 0, 0, pixels, info), 0);
    EXPECT_EQ(Stretch(canvas.dc, 2, 0, pixels, Info(2, 2)), 2);  // outside the target
    EXPECT_EQ(Stretch(canvas.dc, 0, 2, pixels, Info(2, 2)), 0);  // outside the source
    EXPECT_EQ(Stretch(canvas.dc, 0, 0, pixels, Info(2, -2)), 2); // rows from the top

    Pixels read(4, 9);
    EXPECT_EQ(Read(canvas.dc, canvas.bitmap, 1, 7, read, Info(2, 2)), 1);
    Read(canvas.dc, canvas.bitmap, 3, 1, read, Info(2, 2)); // beyond the last line
    EXPECT_EQ(read, (Pixels{1, 2, 9, 9}));
    EXPECT_TRUE(Read(canvas.dc, canvas.bitmap, 0, 2, read, Info(2, -2)) == 2 && read == pixels);

    EXPECT_TRUE(SetPixel(canvas.dc, 1, 0, 0xAA030201) == 0x030201 && GetPixel(canvas.dc, 1, 0) == 0x030201);
    EXPECT_TRUE(SetPixel(mono.dc, 0, 0, 0x7F7F7F) == 0 && SetPixel(mono.dc, 1, 0, 0x808080) == 0xFFFFFF);
    for (const auto& [x, y] : {std::pair(-1, 0), {2, 0}, {0, -1}, {0, 2}})
        EXPECT_TRUE(GetPixel(canvas.dc, x, y) == CLR_INVALID && SetPixel(canvas.dc, x, y, 0) == 0);
    EXPECT_EQ(PixelsOf(canvas.Read()), (Pixels{1, 0x010203, 0x7F7F7F, 0x808080}));

    const BITMAPINFO grey = Info(2, 2);
    CBitmap made;
    made.Attach(CreateDIBitmap(mono.dc, &grey.bmiHeader, CBM_INIT, pixels.data(), &grey, DIB_RGB_COLORS));
    EXPECT_TRUE(Read(canvas.dc, made, 0, 2, read, Info(2, -2)) == 2 && read == (Pixels{0, 0xFFFFFF, 0, 0}));
}
