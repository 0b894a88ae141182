#include "Canvas.h"
#include "Pictures.h"

#include <bit>
#include <gtest/gtest.h>
#include <list>

using namespace test;

TEST(WinDib, StretchesAsWorkedOutByHand)
{
    // From so many pixels to so many, and which ones each target pixel takes: source pixel i as bit i.
    const int cases[][12] = {
        {3, 4, 1, 2, 2, 4},  {2, 5, 1, 1, 1, 2, 2}, {7, 10, 1, 2, 2, 4, 8, 8, 16, 32, 32, 64},
        {3, 2, 3, 4},        {7, 4, 3, 12, 16, 96}, {10, 4, 7, 24, 224, 768},
        {4, -4, 8, 4, 2, 1}, {3, -2, 4, 3}};
    for (const auto& c : cases)
        for (const int mode : {BLACKONWHITE, WHITEONBLACK, COLORONCOLOR})
        {
            const std::uint32_t inverted = mode == BLACKONWHITE ? 0xFFFFFFFF : 0; // AND joins zeros
            Pixels pixels, expected;
            for (int i = 0; i < c[0]; ++i)
                pixels.push_back(1U << i ^ inverted);
            for (int i = 2; i < 2 + std::abs(c[1]); ++i)
            {
                const auto taken = static_cast<std::uint32_t>(c[i]);
                expected.push_back(mode == COLORONCOLOR ? std::bit_floor(taken) : taken ^ inverted);
            }
            Canvas source(c[0], 1, 32, pixels.data()), canvas(std::abs(c[1]), 1, 32);
            SetStretchBltMode(canvas.dc, mode);
            source.Read().StretchDraw(canvas.dc, c[1] > 0 ? 0 : -c[1] - 1, 0, c[1], 1);
            EXPECT_EQ(PixelsOf(canvas.Read()), expected) << c[0] << " to " << c[1] << " in mode " << mode;
        }
}

TEST(WinDib, ReadsAndMakesDeviceBitmaps)
{
    const auto read = [](int bits, const Bytes& row)
    { return PixelsOf(Canvas(4, 1, bits, row.data()).Read()); };
    EXPECT_EQ(read(1, {0x50, 0}), (Pixels{0, 0xFFFFFF, 0, 0xFFFFFF}));
    EXPECT_EQ(read(8, {0, 1, 9, 2}), (Pixels{0, 0x800000, 0xA6CAF0, 0x008000}));
    EXPECT_EQ(read(16, {0x1F, 0, 0xFF, 0x7F, 0, 0x7C, 1, 0x80}), (Pixels{0x0000FF, 0xFFFFFF, 0xFF0000, 8}));
    EXPECT_EQ(read(24, {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9}),
              (Pixels{0x030201, 0x060504, 0x090807, 0x090909}));

    const tagRGBQUAD colors[] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    CWinDib dib, back;
    dib.Create(4, 1, 8);
    WriteBytes(dib.GetScanLine(0), {0, 1, 2, 200});
    for (const Pixels& expected : {Pixels{0x030201, 0x070605, 0, 0}, Pixels(4)})
    {
        ASSERT_TRUE(
            dib.SetColorTable(colors, expected[0] == 0 ? 0 : 2)); // with 0 the header still announces 2
        CBitmap bitmap;
        EXPECT_TRUE(bitmap.Attach(dib.CreateDDB()) && back.CreateFromDDB(&bitmap, nullptr));
        EXPECT_EQ(PixelsOf(back), expected);
    }
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
        ASSERT_TRUE(bitmap.Attach(dib.CreateDDB()) && dib.CreateFromDDB(&bitmap, nullptr)) << i;
        ASSERT_TRUE(dib.Capture(canvas.dc, CRect(0, 0, 2, 2))) << i;
    }
    const BITMAPINFOHEADER header = {40, 2, 2, 1, 32, BI_RGB, 16, 0, 0, 0, 0};
    EXPECT_TRUE(PixelsOf(dib) == pixels && std::memcmp(Packed(dib).data(), &header, sizeof header) == 0);
    EXPECT_TRUE(!dib.Capture(canvas.dc, CRect(INT32_MIN, 0, INT32_MAX, 1)) && dib.CreateDDB() == nullptr);
}
