#include "kernels/Kernels.h"

#include <cstring>

namespace zel
{

namespace
{

constexpr std::uint32_t kOpaque = 0xFF000000;

// Pixels are stored as four bytes wherever another pixel of the row follows. With a step of three, that pixel
// overwrites the surplus byte.
void StorePixel(unsigned char* dst, std::uint32_t pixel)
{
    std::memcpy(dst, &pixel, sizeof pixel);
}

void StoreLastPixel(unsigned char* dst, int dstStep, std::uint32_t pixel)
{
    std::memcpy(dst, &pixel, static_cast<std::size_t>(dstStep));
}

// Stores pixelAt(0) to pixelAt(count - 1); count is at least 1.
template <typename PixelAt>
void StoreRow(unsigned char* dst, int dstStep, int count, const PixelAt& pixelAt)
{
    int x = 0;
    for (; x < count - 1; ++x, dst += dstStep)
        StorePixel(dst, pixelAt(x));
    StoreLastPixel(dst, dstStep, pixelAt(x));
}

// Widens five bits to eight by bit replication, so that 31 becomes 255.
std::uint32_t Widen(int value)
{
    return static_cast<std::uint32_t>(value << 3 | value >> 2);
}

// In two halves, since g++ 12 at -O3 turns a copy of sixteen bytes in a loop into an aligned vector store.
void StoreRun(unsigned char* dst, const unsigned char (&run)[16])
{
    std::memcpy(dst, run, 8);
    std::memcpy(dst + 8, run + 8, 8);
}

// Expands whole bytes of 1-bit indices, four pixels at a time. Returns the number of pixels done.
int ExpandBits(unsigned char* dst, int dstStep, const unsigned char* src, const std::uint32_t* pixels,
               int count)
{
    unsigned char runs[16][16] = {};
    for (int bits = 0; bits < 16; ++bits)
        for (int i = 0; i < 4; ++i)
            StoreLastPixel(runs[bits] + dstStep * i, dstStep, pixels[bits >> (3 - i) & 1]);

    // Four pixels are stored as sixteen bytes even where they have 3 bytes each, so two more have to follow.
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
