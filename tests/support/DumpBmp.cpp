// Loads a BMP file by the library and writes its pixels as a PPM file to standard output. Exits with 1 if the
// library refuses the file.
#include "ZelUtil/TarvexDib.h"

#include <cstdio>

int main(int, char** argv)
{
    CTarvexDib dib;
    if (!dib.Load(argv[1]) || !dib.ChangeToTrueColor(false))
        return 1;
    std::printf("P6 %d %d 255\n", dib.Width(), dib.Height());
    for (int y = 0; y < dib.Height(); ++y)
        for (int x = 0; x < dib.Width(); ++x)
            for (int channel = 2; channel >= 0; --channel)
                std::putchar(dib.GetPixelFast(x, y)[channel]);
}
