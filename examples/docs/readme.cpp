#include <ZelUtil/ZelUtil.h>

int main()
{
    BitmapCache cache;
    CTarvexDib* const map = cache.getBitmap("map.bmp"); // shared, loaded once; the cache owns it
    if (map == nullptr)
        return 1;

    CTarvexDib picture(*map); // a copy: other users of the cached image see no change
    if (!picture.ChangeToTrueColor(true))
        return 1;

    CTarvexDib view;
    if (!view.Create(800, 600, 32))
        return 1;
    view.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    if (!view.Resize(picture) || !view.ColorMix(1.0F, 0.8F, 0.4F, 0.25F))
        return 1;
    return view.Save("view.bmp") ? 0 : 1;
}
