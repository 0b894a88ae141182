#include "image/Kernels.h"

#include <cstddef>

namespace zel
{

namespace
{

// Five bits to eight: 0 stays 0 and 31 becomes 255.
unsigned char Widen(int value)
{
    return static_cast<unsigned char>(value << 3 | value >> 2);
}

} // namespace

void ExpandIndexRow(unsigned char* dst, int dstStep, const unsigned char* src, int bits,
                    const unsigned char (*colors)[4], int count)
{
    const int perByte = 8 / bits;
    const int mask = (1 << bits) - 1;
    for (int x = 0; x < count; ++x, dst += dstStep)
    {
        const int shift = 8 - bits - x % perByte * bits;
        const unsigned char* color = colors[src[x / perByte] >> shift & mask];
        for (int c = 0; c < 3; ++c)
            dst[c] = color[c];
    }
}

void ExpandWordRow(unsigned char* dst, int dstStep, const unsigned char* src, int count)
{
    for (int x = 0; x < count; ++x, dst += dstStep, src += 2)
    {
        const int word = src[0] | src[1] << 8;
        for (int c = 0; c < 3; ++c)
            dst[c] = Widen(word >> (5 * c) & 31);
    }
}

void ExpandTripleRow(unsigned char* dst, const unsigned char* src, int count)
{
    for (int x = 0; x < count; ++x, dst += 4, src += 3)
        for (int c = 0; c < 3; ++c)
            dst[c] = src[c];
}

} // namespace zel
