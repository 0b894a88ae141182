#include "PixelBench.h"

#include <stb_image_resize2.h>

namespace
{

void AddResize(const Scale& s, int method, int bits, const char* peer, stbir_filter filter)
{
    AddPeer(ResizeName(s, method, bits), peer, s.width, s.height,
            [=]
            {
                const CTarvexDib& from = Picture(s.fromWidth, s.fromHeight, bits);
                const CTarvexDib& to = Target(s.width, s.height, bits);
                stbir_resize(from.GetScanLine(0), s.fromWidth, s.fromHeight, from.BytesPerScanLine(),
                             to.GetScanLine(0), s.width, s.height, to.BytesPerScanLine(),
                             bits == 24 ? STBIR_RGB : STBIR_4CHANNEL, STBIR_TYPE_UINT8, STBIR_EDGE_CLAMP,
                             filter);
            });
}

} // namespace

void AddStb()
{
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
        return;
    for (const Scale& s : kScales)
        for (const int bits : {24, 32})
        {
            if (Enlarges(s))
                AddResize(s, 1, bits, "stb", STBIR_FILTER_TRIANGLE);
            AddResize(s, 2, bits, Reduces(s) ? "stb*" : "stb", STBIR_FILTER_CUBICBSPLINE);
        }
}
