// Drawing, copying and capturing in memory against a model, on a screen of 32 bits or of 8 bits with a
// palette.

#include "Properties.h"

#include "Canvas.h"

#include <array>

using namespace test;

namespace
{

constexpr std::uint32_t kWhite = 0xFFFFFF;

struct Picture
{
    int width, height;
    Pixels pixels = Pixels(static_cast<std::size_t>(width * height));

    std::uint32_t& At(int x, int y) { return pixels.data()[y * width + x]; }
};

// The pixel as a bitmap of this depth stores it. The palette has 4 shades of red, 4 of green and 16 of blue.
std::uint32_t Stored(int depth, std::uint32_t pixel)
{
    const auto nearest = [&](int shift, std::uint32_t step)
    { return ((pixel >> shift & 255) + step / 2) / step * step << shift; };
    const std::uint32_t mono = (pixel & kWhite) == kWhite ? kWhite : 0;
    return depth == 1 ? mono : depth == 8 ? nearest(16, 85) | nearest(8, 85) | nearest(0, 17) : pixel;
}

// An image of any depth, white here and there. Its colour table may be shorter than its pixels need.
CWinDib MakeImage(Input& input)
{
    const int bits = std::array{1, 4, 8, 16, 24, 32}[input.Byte() % 6U], full = bits <= 8 ? 1 << bits : 0;
    const int width = 1 + input.Below(input.Below(8) == 0 ? 200 : 9), height = 1 + input.Below(9);
    Bytes packed = BlankPacked(width, height, bits, 0, full);
    std::minstd_rand random(input.Byte() + 1U);
    std::generate(packed.begin() + 40, packed.end(),
                  [&] { return static_cast<unsigned char>(random() % 3 == 0 ? 255 : random() >> 8); });
    CWinDib dib;
    LoadPacked(dib, packed);
    if (input.Below(2) == 0)
        dib.SetColorTable(dib.GetColorTable(), input.Below(full + 1));
    return dib;
}

// Along one axis: for each target position, the source positions that it takes. The borders between the
// positions of the smaller extent, k * larger / smaller rounded half up, divide the larger one into groups.
std::vector<std::vector<int>> SourceRanges(int size, std::int64_t at, std::int64_t extent, int sourceSize,
                                           std::int64_t sourceAt, std::int64_t sourceExtent)
{
    const std::int64_t m = std::abs(extent), n = std::abs(sourceExtent);
    const auto border = [larger = std::max(m, n), smaller = std::min(m, n)](std::int64_t k)
    { return k * larger / smaller + (k * larger % smaller * 2 >= smaller); };
    std::vector<std::vector<int>> ranges(static_cast<std::size_t>(size));
    for (int to = 0; to < size; ++to)
        for (int from = 0; from < sourceSize; ++from)
        {
            const std::int64_t j = extent < 0 ? at - to : to - at;
            const std::int64_t i = sourceExtent < 0 ? sourceAt - from : from - sourceAt;
            const auto [group, member] = m < n ? std::pair(j, i) : std::pair(i, j);
            std::vector<int>& list = ranges.data()[to];
            if (group >= 0 && group < std::min(m, n) && border(group) <= member && member < border(group + 1))
                list.insert(sourceExtent < 0 ? list.begin() : list.end(), from);
        }
    return ranges;
}

// Draws the area n[4] to n[7] of the source, a position and two extents, into the area n[0] to n[3].
void Paint(Picture& to, int depth, Picture source, const std::int64_t (&n)[8], int mode = COLORONCOLOR)
{
    const auto columns = SourceRanges(to.width, n[0], n[2], source.width, n[4], n[6]);
    const auto rows = SourceRanges(to.height, n[1], n[3], source.height, n[5], n[7]);
    for (int i = 0; i < to.width * to.height; ++i)
    {
        const std::vector<int>&takenX = columns.data()[i % to.width], &takenY = rows.data()[i / to.width];
        if (takenX.empty() || takenY.empty())
            continue;
        std::uint32_t pixel = source.At(takenX.back(), takenY.front());
        for (const int y : takenY)
            for (const int x : takenX)
                if (mode < COLORONCOLOR)
                    pixel = mode == BLACKONWHITE ? pixel & source.At(x, y) : pixel | source.At(x, y);
        to.pixels.data()[i] = Stored(depth, pixel);
    }
}

} // namespace

// The first byte chooses the screen, and whether coordinates are spread wide or so close that most drawings
// meet their target.
void property::Gdi(Input input)
{
    const int kind = input.Byte(), depth = kind % 2 == 0 ? 32 : 8, scale = 4 << kind / 2 % 3;
    PALETTEENTRY colors[256], read[256];
    for (int i = 0; i < 256; ++i)
        colors[i ^ 8] = {BYTE(i / 64 * 85), BYTE(i / 16 % 4 * 85), BYTE(i % 16 * 17), 0};
    Canvas wide(70, 5, 32); // stays selected if the screen changes
    Require(SetSoftScreen(640, 480, depth, colors, 256), "a screen is set");
    for (const auto& [width, height, bits, count] :
         {std::array{0, 9, 32, 0}, {9, -1, 32, 0}, {9, 9, 16, 1}, {9, 9, 8, 0}, {9, 9, 8, 257}})
        Require(!SetSoftScreen(width, height, bits, colors, static_cast<UINT>(count)), "no other screen");
    Require(GetDeviceCaps(wide.dc, HORZRES) == 640 && GetDeviceCaps(wide.dc, VERTRES) == 480 &&
                GetDeviceCaps(wide.dc, BITSPIXEL) == depth &&
                GetDeviceCaps(wide.dc, RASTERCAPS) == (depth == 8 ? 0xBF99 : 0xBE99) &&
                GetSystemPaletteEntries(wide.dc, 200, 99, read) == (depth == 8 ? 56 : 0),
            "the screen is described");

    Canvas mono(24, 12, 1), first(23, 11, depth), second(9, 7, depth);
    Canvas* const canvases[] = {&wide, &mono, &first, &second};
    const std::uint32_t blank = depth == 8 ? 8 * 17 : 0; // what index 0 stands for
    Picture models[] = {{70, 5}, {24, 12}, {23, 11, Pixels(23 * 11, blank)}, {9, 7, Pixels(9 * 7, blank)}};
    const int depths[] = {32, 1, depth, depth};
    while (!input.IsEmpty())
    {
        int n[8]; // mostly small and positive, divided by `scale`; the extremes of int stay
        for (int& number : n)
        {
            const int any = input.Number();
            number = std::abs(any / 2) > 100 ? any : (any < -32 ? any + 128 : any) / scale;
        }
        const int step = input.Below(4), mode = 1 + input.Below(4), to = input.Below(4),
                  from = input.Below(4);
        Picture &target = models[to], &source = models[from];
        if (step == 0)
        {
            BitBlt(canvases[to]->dc, n[0], n[1], n[2], n[3], canvases[from]->dc, n[4], n[5], SRCCOPY);
            Paint(target, depths[to], source, {n[0], n[1], n[2], n[3], n[4], n[5], n[2], n[3]});
        }
        else if (step == 1)
        {
            const CRect rect(n[0] % 64, n[1] % 64, n[2] % 64, n[3] % 64);
            const int width = rect.Width(), height = rect.Height();
            const bool isEmpty = width * height == 0;
            Picture captured = {isEmpty ? 1 : std::abs(width), isEmpty ? 1 : std::abs(height)};
            captured.pixels.assign(captured.pixels.size(), depths[from] == 8 ? blank : 0);
            if (from > 0 || depth == 32) // on a palette screen the 32-bit bitmap cannot be selected
                Paint(captured, depths[from], source,
                      {0, 0, width, height, rect.left, rect.top, width, height});
            if (depths[from] == 8) // Capture uses 255 palette entries, so index 255 becomes black
                std::replace(captured.pixels.begin(), captured.pixels.end(), 0xFFFF77U, 0U);
            CWinDib dib;
            Require(dib.Capture(canvases[from]->dc, rect), "capturing");
            if (isEmpty) // the pixel of the bitmap that fresh contexts share, whatever was drawn on it
                captured.pixels = {PixelsOf(dib).front()};
            Require(PixelsOf(dib) == captured.pixels, "captured pixels");
        }
        else
        {
            const CWinDib dib = MakeImage(input);
            const std::int64_t top = std::int64_t{dib.Height()} - n[5] - n[7];
            SetStretchBltMode(canvases[to]->dc, mode);
            dib.StretchDrawRect(canvases[to]->dc, n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7]);
            Paint(target, depths[to], {dib.Width(), dib.Height(), PixelsOf(dib)},
                  {n[0], n[1], n[2], n[3], n[4], top, n[6], n[7]}, mode);
        }
        Require(PixelsOf(canvases[to]->Read()) == target.pixels, "the pixels are those of the model");
    }
    SetSoftScreen(1024, 768, 32, nullptr, 0);
}
