#include "ZelUtil/WinDib.h"

#include "Pictures.h"
#include "StretchModel.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace test;

namespace
{

Pixels RandomPixels(int count)
{
    Pixels pixels(static_cast<std::size_t>(count));
    std::generate(pixels.begin(), pixels.end(), [] { return static_cast<std::uint32_t>(Random()()); });
    return pixels;
}

// A context in memory with a bitmap of 32 bits.
class Canvas
{
public:
    Canvas(int width, int height, const Pixels& pixels)
    {
        m_dc.CreateCompatibleDC(nullptr);
        m_bitmap.Attach(CreateBitmap(width, height, 1, 32, pixels.data()));
        m_previous = SelectObject(m_dc, m_bitmap.m_hObject);
    }

    ~Canvas() { SelectObject(m_dc, m_previous); }

    HDC Dc() const { return m_dc; }

    Pixels Read()
    {
        CWinDib dib;
        dib.CreateFromDDB(&m_bitmap, nullptr);
        Pixels pixels;
        for (int y = 0; y < dib.Height(); ++y)
            for (int x = 0; x < dib.Width(); ++x)
            {
                std::uint32_t pixel;
                std::memcpy(&pixel, dib.GetPixelFast(x, y), 4);
                pixels.push_back(pixel);
            }
        return pixels;
    }

private:
    CBitmap m_bitmap; // deleted last
    CDC m_dc;
    HGDIOBJ m_previous;
};

CWinDib RandomDib(int width, int height, int bits)
{
    Bytes packed = RandomPacked(width, height, bits, 0, bits <= 8 ? 1 << bits : 0);
    CWinDib dib;
    dib.Load(packed.data(), static_cast<int>(packed.size()));
    return dib;
}

} // namespace

TEST(WinDib, StretchesAsDefined)
{
    for (int round = 0; round < 3000; ++round)
    {
        const int depths[] = {1, 4, 8, 16, 24, 32}, size = round % 49 == 0 ? 300 : round % 10 == 0 ? 40 : 9;
        const CWinDib dib = RandomDib(RandomInt(1, size), RandomInt(1, size), depths[round % 6]);
        const int width = RandomInt(1, size == 300 ? 500 : 30), height = RandomInt(1, 30),
                  mode = RandomInt(1, 3);
        Pixels expected = RandomPixels(width * height);
        Canvas canvas(width, height, expected);
        EXPECT_EQ(SetStretchBltMode(canvas.Dc(), mode), BLACKONWHITE);

        // Upright with a source that may leave the picture, or mirrored within it.
        const bool mirrored = round % 3 == 0;
        Area dest{RandomInt(-20, 30), RandomInt(-20, 30), RandomInt(0, width + 10), RandomInt(0, 40)};
        Area src{RandomInt(-4, 8), RandomInt(-4, 8), RandomInt(1, size + 3), RandomInt(1, 12)};
        if (mirrored)
        {
            src = {RandomInt(0, dib.Width() - 1), RandomInt(0, dib.Height() - 1), 1, 1};
            src.width = RandomInt(1, dib.Width() - src.x);
            src.height = RandomInt(1, dib.Height() - src.y);
            dest.width = RandomInt(-40, 40);
            dest.height = RandomInt(-40, 40);
        }
        if (round % 5 == 0)
        {
            src = {0, 0, dib.Width(), dib.Height()};
            dib.StretchDraw(canvas.Dc(), dest.x, dest.y, dest.width, dest.height);
        }
        else
            dib.StretchDrawRect(canvas.Dc(), dest.x, dest.y, dest.width, dest.height, src.x, src.y, src.width,
                                src.height);
        StretchByDefinition(expected, width, height, dest, dib, src, mode);
        ASSERT_EQ(canvas.Read(), expected)
            << dib.BitCount() << " bits, " << dib.Width() << " x " << dib.Height() << " on " << width << " x "
            << height << ": (" << dest.x << ", " << dest.y << ", " << dest.width << ", " << dest.height
            << ") from (" << src.x << ", " << src.y << ", " << src.width << ", " << src.height << "), mode "
            << mode;
    }
}

TEST(WinDib, StretchTakesThesePixels)
{
    const struct
    {
        int source, dest;
        const char* taken; // the pixels' numbers, or those of a group joined by OR
    } cases[] = {{3, 4, "1 2 2 4 "},    {2, 3, "1 1 2 "},
                 {2, 5, "1 1 1 2 2 "},  {3, 2, "3 4 "},
                 {7, 4, "3 12 16 96 "}, {10, 4, "7 24 224 768 "},
                 {4, -4, "8 4 2 1 "},   {1, 3, "1 1 1 "},
                 {3, 1, "7 "},          {7, 10, "1 2 2 4 8 8 16 32 32 64 "}};
    for (const auto& c : cases)
    {
        CWinDib dib;
        ASSERT_TRUE(dib.Create(c.source, 1, 32));
        for (int i = 0; i < c.source; ++i)
        {
            const std::uint32_t pixel = 1U << i;
            std::memcpy(dib.GetPixelFast(i, 0), &pixel, 4);
        }
        const int extent = std::abs(c.dest);
        Canvas canvas(extent, 1, Pixels(static_cast<std::size_t>(extent)));
        SetStretchBltMode(canvas.Dc(), WHITEONBLACK);
        dib.StretchDraw(canvas.Dc(), c.dest > 0 ? 0 : extent - 1, 0, c.dest, 1);
        std::string taken;
        for (const std::uint32_t pixel : canvas.Read())
            taken += std::to_string(pixel) + " ";
        EXPECT_EQ(taken, c.taken) << c.source << " to " << c.dest;
    }

    // The first row of a part is the picture's bottom row.
    CWinDib dib;
    ASSERT_TRUE(dib.Create(1, 2, 24));
    std::memset(dib.GetPixelFast(0, 0), 1, 3);
    std::memset(dib.GetPixelFast(0, 1), 2, 3);
    Canvas canvas(2, 2, Pixels(4, 9));
    dib.StretchDrawRect(canvas.Dc(), 1, 0, 1, 1, 0, 0, 1, 1);
    EXPECT_EQ(canvas.Read(), (Pixels{9, 0x020202, 9, 9}));
}

TEST(WinDib, EmptyImagesAndBadContextsDrawNothing)
{
    const CWinDib empty, dib = RandomDib(2, 2, 24);
    Canvas canvas(2, 2, Pixels(4, 7));
    empty.StretchDraw(canvas.Dc(), 0, 0, 2, 2);
    empty.StretchDrawRect(canvas.Dc(), 0, 0, 2, 2, 0, 0, 1, 1);
    EXPECT_EQ(empty.CreateDDB(), nullptr);
    dib.StretchDraw(nullptr, 0, 0, 2, 2);
    dib.StretchDraw(canvas.Dc(), 0, 0, 0, 2);
    dib.StretchDrawRect(canvas.Dc(), 0, 0, 2, 2, 5, 5, 2, 2);
    EXPECT_EQ(canvas.Read(), Pixels(4, 7));
}

TEST(WinDib, ShortColourTablesEndInBlack)
{
    CWinDib shortened = RandomDib(16, 16, 8);
    ASSERT_TRUE(shortened.SetColorTable(shortened.GetColorTable(), 3));
    CWinDib none(shortened);
    ASSERT_TRUE(none.SetColorTable(nullptr, 0)); // its header still promises 3
    const struct
    {
        const CWinDib& dib;
        int colors;
    } cases[] = {{shortened, 3}, {none, 0}};
    for (const auto& c : cases)
    {
        Pixels expected;
        for (int i = 0; i < 256; ++i)
        {
            const int x = i % 16, y = i / 16;
            expected.push_back(*c.dib.GetPixelFast(x, y) < c.colors ? DevicePixel(c.dib, x, y) : 0);
        }
        Canvas canvas(16, 16, Pixels(256, 5));
        c.dib.StretchDraw(canvas.Dc(), 0, 0, 16, 16);
        EXPECT_EQ(canvas.Read(), expected);
        CBitmap bitmap;
        CWinDib back;
        ASSERT_TRUE(bitmap.Attach(c.dib.CreateDDB()) && back.CreateFromDDB(&bitmap, nullptr));
        for (int i = 0; i < 256; ++i)
            EXPECT_EQ(DevicePixel(back, i % 16, i / 16), expected[static_cast<std::size_t>(i)]);
    }
}

TEST(WinDib, DeviceBitmapsThereAndBack)
{
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const int width : {1, 2, 7, 33})
        {
            SCOPED_TRACE(testing::Message() << bits << " bits, width " << width);
            CWinDib dib = RandomDib(width, 5, bits), back = RandomDib(3, 3, 24);
            back.SetupInterpolMethod(CTarvexDib::InterpolCubic);
            CBitmap bitmap;
            ASSERT_TRUE(bitmap.Attach(dib.CreateDDB()));
            const CPalette noPalette;
            ASSERT_TRUE(back.CreateFromDDB(&bitmap, width == 1 ? nullptr : &noPalette));

            Bytes packed = Packed(back);
            BITMAPINFOHEADER header;
            std::memcpy(&header, packed.data(), sizeof header);
            EXPECT_TRUE(header.biSize == 40 && header.biWidth == width && header.biHeight == 5 &&
                        header.biPlanes == 1 && header.biBitCount == 32 && header.biCompression == 0);
            EXPECT_TRUE(header.biXPelsPerMeter == 0 && header.biYPelsPerMeter == 0 && header.biClrUsed == 0 &&
                        header.biClrImportant == 0);
            EXPECT_EQ(header.biSizeImage, static_cast<std::uint32_t>(20 * width));
            EXPECT_EQ(back.GetDibLength(), 40 + 20 * width);
            EXPECT_EQ(back.GetInterpolMethod(), CTarvexDib::InterpolCubic);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < width; ++x)
                    EXPECT_EQ(DevicePixel(back, x, y), DevicePixel(dib, x, y)) << x << " " << y;
        }
}

TEST(WinDib, DeviceBitmapsOfOtherDepths)
{
    const unsigned char one[] = {0x40, 0, 0xA0, 0}, sixteen[] = {0x1F, 0, 0xFF, 0x7F, 0, 0x7C, 1, 0x80},
                        twentyFour[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, eight[] = {0, 1, 9, 2};
    const struct
    {
        int depth;
        const unsigned char* bits;
        std::uint32_t pixels[4]; // 2 x 2, from the top
    } cases[] = {{1, one, {0, 0xFFFFFF, 0xFFFFFF, 0}},
                 {8, eight, {0, 0x800000, 0xA6CAF0, 0x008000}},
                 {16, sixteen, {0x0000FF, 0xFFFFFF, 0xFF0000, 0x000008}},
                 {24, twentyFour, {0x030201, 0x060504, 0x090807, 0x0C0B0A}}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.depth);
        CBitmap bitmap;
        ASSERT_TRUE(bitmap.Attach(CreateBitmap(2, 2, 1, static_cast<UINT>(c.depth), c.bits)));
        CWinDib dib;
        ASSERT_TRUE(dib.CreateFromDDB(&bitmap, nullptr));
        EXPECT_TRUE(dib.Width() == 2 && dib.Height() == 2 && dib.BitCount() == 32 &&
                    dib.GetDibLength() == 56);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(DevicePixel(dib, i % 2, i / 2), c.pixels[i]) << i;
    }
}

TEST(WinDib, WhatIsNoBitmapLeavesTheImageEmpty)
{
    CBitmap none, stale, palette;
    stale.m_hObject = CreateBitmap(2, 2, 1, 32, nullptr);
    DeleteObject(stale.m_hObject);
    palette.m_hObject = GetStockObject(DEFAULT_PALETTE);
    for (CBitmap* const bitmap : {static_cast<CBitmap*>(nullptr), &none, &stale, &palette})
    {
        CWinDib dib = RandomDib(3, 3, 24);
        EXPECT_FALSE(dib.CreateFromDDB(bitmap, nullptr));
        EXPECT_TRUE(dib.BitCount() == 0 && dib.Width() == 0 && dib.CreateDDB() == nullptr);
    }
    stale.Detach();
    palette.Detach();
}

TEST(WinDib, CapturesTheRectangle)
{
    const Pixels pixels = RandomPixels(12 * 9);
    const Canvas canvas(12, 9, pixels);
    for (const CRect& rect : {CRect(0, 0, 12, 9), CRect(3, 2, 8, 9), CRect(-2, -1, 5, 4), CRect(7, 5, 20, 15),
                              CRect(-3, -3, 16, 14), CRect(30, 0, 34, 2)})
    {
        SCOPED_TRACE(testing::Message() << rect.left << " " << rect.top);
        CWinDib dib = RandomDib(2, 2, 8);
        ASSERT_TRUE(dib.Capture(canvas.Dc(), rect));
        ASSERT_TRUE(dib.Width() == rect.Width() && dib.Height() == rect.Height() && dib.BitCount() == 32);
        for (int y = 0; y < dib.Height(); ++y)
            for (int x = 0; x < dib.Width(); ++x)
            {
                const int column = static_cast<int>(rect.left) + x, row = static_cast<int>(rect.top) + y;
                const bool inside = column >= 0 && row >= 0 && column < 12 && row < 9;
                EXPECT_EQ(DevicePixel(dib, x, y),
                          inside ? pixels[static_cast<std::size_t>(row * 12 + column)] : 0);
            }
    }

    CWinDib dib;
    EXPECT_TRUE(dib.Capture(canvas.Dc(), CRect(3, 3, 3, 5))); // the stock bitmap
    EXPECT_TRUE(dib.Width() == 1 && dib.Height() == 1 && DevicePixel(dib, 0, 0) == 0);

    CDC gone;
    gone.CreateCompatibleDC(nullptr);
    const HDC stale = gone;
    gone.DeleteDC();
    EXPECT_FALSE(dib.Capture(stale, CRect(0, 0, 2, 2)));
    EXPECT_EQ(dib.BitCount(), 0);
    ASSERT_TRUE(dib.Create(1, 1, 24));
    constexpr int kMost = std::numeric_limits<int>::max();
    EXPECT_FALSE(dib.Capture(canvas.Dc(), CRect(-kMost, 0, kMost, 1)));
    EXPECT_EQ(dib.BitCount(), 0);
}

TEST(WinDib, RoundsLeaveNoHandleBehind)
{
    // Fewer handles are left than there are rounds.
    std::vector<HBITMAP> others;
    while (const HBITMAP other = CreateBitmap(1, 1, 1, 1, nullptr))
        others.push_back(other);
    EXPECT_GT(others.size(), 5000U);
    for (int i = 0; i < 5000; ++i, others.pop_back())
        DeleteObject(others.back());

    CWinDib dib = RandomDib(2, 2, 24);
    const Canvas canvas(2, 2, Pixels(4));
    for (int i = 0; i < 20000; ++i)
    {
        CBitmap bitmap;
        ASSERT_TRUE(bitmap.Attach(dib.CreateDDB())) << i;
        ASSERT_TRUE(dib.CreateFromDDB(&bitmap, nullptr) && dib.Capture(canvas.Dc(), CRect(0, 0, 2, 2))) << i;
    }
    for (const HBITMAP other : others)
        DeleteObject(other);
}

TEST(WinDib, IsAValue)
{
    const CWinDib dib = RandomDib(3, 3, 24);
    CWinDib copy(dib), assigned;
    assigned = dib;
    EXPECT_EQ(Packed(copy), Packed(dib));
    EXPECT_EQ(Packed(assigned), Packed(dib));
    copy.Empty();
    assigned = copy;
    EXPECT_EQ(assigned.BitCount(), 0);
    EXPECT_EQ(dib.BitCount(), 24);

    const RECT rectangle = {1, 2, 30, 40};
    EXPECT_TRUE(CRect(rectangle).Width() == 29 && CRect(rectangle).Height() == 38 && CRect().Width() == 0);
}
