#include <ZelUtil/ZelUtil.h>

#include <cstdio>

int main()
{
    CTarvexDib picture;
    if (!picture.Load("map.bmp"))
    {
        std::puts("map.bmp cannot be loaded");
        return 1;
    }
    std::printf("map.bmp: %d x %d of %d bits\n", picture.Width(), picture.Height(), picture.BitCount());

    CTarvexDib half; // Resize fills an image that has its size and depth
    if (!half.Create(picture.Width() / 2, picture.Height() / 2, 24))
        return 1;
    half.SetupInterpolMethod(CTarvexDib::InterpolBiLinear);
    if (!half.Resize(picture) || !half.Save("half.bmp"))
        return 1;
    std::printf("half.bmp: %d x %d of %d bits\n", half.Width(), half.Height(), half.BitCount());
    return 0;
}
