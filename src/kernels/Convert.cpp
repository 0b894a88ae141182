#include "kernels/Kernels.h"

#include <cstring>

namespace zel
{

namespace
{

constexpr std::uint32_t kOpaque = 0xFF000000;

// Pixels are stored as four bytes wherever another one of the row follows: those of three bytes write over
// the surplus byte of the one before.
void StorePixel(unsigned char* dst, std::uint32_t pixel)
{
    std::memcpy(dst, &pixel, sizeof pixel);
}

void StoreLastPixel(unsigned char* dst, int dstStep, std::uint32_t pixel)
{
    std::memcpy(dst, &pixel, static_cast<std::size_t>(dstStep));
}

// The row of `count` pixels, at least one, that `pixelAt` gives.
template <typename PixelAt>
void StoreRow(unsigned char* dst, int dstStep, int count, const PixelAt& pixelAt)
{
    int x = 0;
    for (; x < count - 1; ++x, dst += dstStep)
        StorePixel(dst, pixelAt(x));
    StoreLastPixel(dst, dstStep, pixelAt(x));
}

// Five bits to eight: 0 stays 0 and 31 becomes 255.
std::uint32_t Widen(int value)
{
    return static_cast<std::uint32_t>(value << 3 | value >> 2);
}

// In two halves: of sixteen bytes at once g++ 12 makes, at -O3, a vector that it takes for an aligned one.
void StoreRun(unsigned char* dst, const unsigned char (&run)[16])
{
    std::memcpy(dst, run, 8);
    std::memcpy(dst + 8, run + 8, 8);
}

// Whole bytes of one-bit indices, four pixels at a time. Gives how many pixels.
int ExpandBits(unsigned char* dst, int dstStep, const unsigned char* src, const std::uint32_t* pixels,
               int count)
{
    unsigned char runs[16][16] = {};
    for (int bits = 0; bits < 16; ++bits)
        for (int i = 0; i < 4; ++i)
            StoreLastPixel(runs[bits] + dstStep * i, dstStep, pixels[bits >> (3 - i) & 1]);

    // Sixteen bytes are stored for four pixels of 3 bytes as well: two more pixels have to follow.
    int done = 0;
    for (; done + 10 <= count; done += 8, ++src)
    {
        StoreRun(dst + dstStep * done, runs[*src >> 4]);
        StoreRun(dst + dstStep * (done + 4), runs[*src & 15]);
    }
    return done;
}

} // namespace

void PaletteToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int bits,
                           const std::uint32_t* pixels, int count)
{
    if (bits == 8)
        return StoreRow(dst, dstStep, count, [&](int x) { return pixels[src[x]]; });
    if (bits == 4)
        return StoreRow(dst, dstStep, count,
                        [&](int x) { return pixels[src[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15]; });

    const int done = ExpandBits(dst, dstStep, src, pixels, count);
    StoreRow(dst + dstStep * done, dstStep, count - done,
             [&](int x) { return pixels[src[(done + x) / 8] >> (7 - x % 8) & 1]; });
}

void Bgr555ToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int count)
{
    StoreRow(dst, dstStep, count,
             [&](int x)
             {
                 const int word = src[2 * x] | src[2 * x + 1] << 8;
                 return kOpaque | Widen(word >> 10 & 31) << 16 | Widen(word >> 5 & 31) << 8 |
                        Widen(word & 31);
             });
}

void Bgr24ToBgra32Row(unsigned char* dst, const unsigned char* src, int count)
{
    for (int x = 0; x < count; ++x, dst += 4, src += 3)
    {
        std::memcpy(dst, src, 3);
        dst[3] = 255;
    }
}

} // namespace zel
