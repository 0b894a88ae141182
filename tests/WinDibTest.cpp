#include "Canvas.h"
#include "Pictures.h"

#include <gtest/gtest.h>
#include <list>

using namespace test;

TEST(WinDib, StretchesAsWorkedOutByHand)
{
    const Pixels bits = {1, 2, 4, 8, 16, 32, 64, 128, 256, 512};
    // From so many pixels to so many, and which ones each target pixel takes: source pixel i as bit i.
    const int cases[][12] = {
        {3, 4, 1, 2, 2, 4},  {2, 5, 1, 1, 1, 2, 2}, {7, 10, 1, 2, 2, 4, 8, 8, 16, 32, 32, 64},
        {3, 2, 3, 4},        {7, 4, 3, 12, 16, 96}, {10, 4, 7, 24, 224, 768},
        {4, -4, 8, 4, 2, 1}, {3, -2, 4, 3}};
    for (const auto& c : cases)
    {
        const int width = std::abs(c[1]);
        Canvas source(c[0], 1, 32, bits.data()), canvas(width, 1, 32);
        SetStretchBltMode(canvas.dc, WHITEONBLACK); // OR
        source.Read().StretchDraw(canvas.dc, c[1] > 0 ? 0 : width - 1, 0, c[1], 1);
        EXPECT_EQ(PixelsOf(canvas.Read()), Pixels(c + 2, c + 2 + width)) << c[0] << " to " << c[1];
    }
}

TEST(WinDib, ReadsDeviceBitmapsOfEveryDepth)
{
    const auto read = [](int bits, const Bytes& row)
    { return PixelsOf(Canvas(4, 1, bits, row.data()).Read()); };
    EXPECT_EQ(read(1, {0x50, 0}), (Pixels{0, 0xFFFFFF, 0, 0xFFFFFF}));
    EXPECT_EQ(read(8, {0, 1, 9, 2}), (Pixels{0, 0x800000, 0xA6CAF0, 0x008000}));
    EXPECT_EQ(read(16, {0x1F, 0, 0xFF, 0x7F, 0, 0x7C, 1, 0x80}), (Pixels{0x0000FF, 0xFFFFFF, 0xFF0000, 8}));
}

TEST(WinDib, LeavesNoHandleBehind)
{
    const Pixels pixels = {1, 2, 3, 4};
    Canvas canvas(2, 2, 32, pixels.data());
    CWinDib dib = canvas.Read();
    std::list<CBitmap> others(1); // almost all handles that there can be
    while (others.back().Attach(CreateBitmap(1, 1, 1, 1, nullptr)))
        others.emplace_back();
    others.resize(others.size() - 100);
    for (int i = 0; i < 1000; ++i)
    {
        CBitmap bitmap;
        ASSERT_TRUE(bitmap.Attach(dib.CreateDDB()) && dib.CreateFromDDB(&bitmap, nullptr) &&
                    dib.Capture(canvas.dc, CRect(0, 0, 2, 2)));
    }
    EXPECT_TRUE(PixelsOf(dib) == pixels && Number(Packed(dib), 20) == 16); // biSizeImage
    EXPECT_FALSE(dib.CreateFromDDB(nullptr, nullptr) || dib.CreateDDB());  // a failure leaves it empty
    dib = canvas.Read();
    EXPECT_FALSE(dib.Capture(canvas.dc, CRect(INT32_MIN, 0, INT32_MAX, 1)) || dib.CreateDDB() ||
                 dib.Capture(canvas.dc, CRect(0, INT32_MIN, 1, INT32_MAX)));
}
