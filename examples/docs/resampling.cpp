#include <ZelUtil/TarvexDib.h>

#include <cstdio>

int main()
{
    CTarvexDib map, part;
    if (!map.Load("map.bmp") || !part.Create(40, 30, 24) || !part.CopyRect(0, 0, map, 102, 54, 40, 84))
        return 1;

    const struct
    {
        CTarvexDib::InterpolMethod method;
        const char* file;
    } pictures[] = {{CTarvexDib::InterpolNearest, "nearest.bmp"},
                    {CTarvexDib::InterpolBiLinear, "bilinear.bmp"},
                    {CTarvexDib::InterpolCubic, "cubic.bmp"}};
    for (const auto& picture : pictures)
    {
        CTarvexDib enlarged;
        if (!enlarged.Create(240, 180, 24))
            return 1;
        enlarged.SetupInterpolMethod(picture.method); // after Create: the method needs the depth
        if (!enlarged.Resize(part) || !enlarged.Save(picture.file))
            return 1;
        std::printf("%s\n", picture.file);
    }
    return 0;
}
