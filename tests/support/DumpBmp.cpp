// Loads a BMP file by the library and writes its pixels as a PPM file; gives 1 where the library refuses it.

#include "ZelUtil/TarvexDib.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CTarvexDib dib;
    if (argc != 3 || !dib.Load(argv[1]) || !dib.ChangeToTrueColor(false))
        return 1;
    std::FILE* const file = std::fopen(argv[2], "wb");
    if (file == nullptr)
        return 2;
    std::fprintf(file, "P6 %d %d 255\n", dib.Width(), dib.Height());
    for (int y = 0; y < dib.Height(); ++y)
        for (int x = 0; x < dib.Width(); ++x)
        {
            const unsigned char* const pixel = dib.GetPixelFast(x, y);
            const unsigned char color[] = {pixel[2], pixel[1], pixel[0]};
            std::fwrite(color, 1, sizeof color, file);
        }
    return std::fclose(file) == 0 ? 0 : 2;
}
