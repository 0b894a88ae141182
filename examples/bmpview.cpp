// Shows a BMP file in a window.
//
//     bmpview [--seconds N] FILE.bmp
//
// With --seconds the window closes by itself after N seconds. Exit code 0: shown, 1: failed, 2: wrong usage.

#include "bmpview.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

int main(int argc, char** argv)
{
    const bool limited = argc == 4 && std::strcmp(argv[1], "--seconds") == 0;
    const double seconds = limited ? std::atof(argv[2]) : 0.0;
    if ((argc != 2 && !limited) || (limited && !(seconds > 0.0 && seconds < 1e6)))
    {
        std::fputs("usage: bmpview [--seconds N] FILE.bmp\n", stderr);
        return 2;
    }
    const char* const path = argv[argc - 1];
    try
    {
        CWinDib picture;
        if (!picture.Load(path))
            throw std::runtime_error("this is no BMP file that can be shown");
        ShowPicture(picture, path, seconds);
        std::printf("%s: %d x %d of %d bits\n", path, picture.Width(), picture.Height(), picture.BitCount());
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "bmpview: %s: %s\n", path, error.what());
        return 1;
    }
}
