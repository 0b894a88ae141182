#include <ZelUtil/TarvexDib.h>

#include <cstdio>

int main()
{
    constexpr int kWidth = 240, kHeight = 160;
    CTarvexDib map, badge, lake, layer, target;
    if (!map.Load("map.bmp") || !badge.Load("badge.bmp") || !lake.Create(kWidth, kHeight, 24) ||
        !layer.Create(kWidth, kHeight, 32) || !target.Create(kWidth, kHeight, 24))
        return 1;
    lake.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    layer.SetupInterpolMethod(CTarvexDib::InterpolBiLinear);
    if (!lake.Resize(map) || !layer.Resize(badge)) // alpha is resampled like a colour
        return 1;

    if (!target.AlphaBlendPerPixel(&layer, &lake) || !target.Save("per-pixel.bmp"))
        return 1;
    if (!target.AlphaBlend(&layer, &lake, 192) || !target.Save("constant.bmp"))
        return 1;
    if (!target.ShadePerPixel(&layer, &lake, 60) || !target.Save("shaded.bmp"))
        return 1;

    // Paint the key colour, magenta, wherever the badge is less than half opaque.
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            if (unsigned char* const pixel = layer.GetPixelFast(x, y); pixel[3] < 128)
            {
                pixel[0] = pixel[2] = 255;
                pixel[1] = 0;
            }
    if (!target.TransparentBlend(&layer, &lake, 255, 0, 255) || !target.Save("keyed.bmp"))
        return 1;

    if (!lake.ChangeToTrueColor(true) || !lake.ColorMix(1.0F, 0.6F, 0.2F, 0.4F) || !lake.Save("mixed.bmp"))
        return 1;
    std::puts("five pictures");
    return 0;
}
