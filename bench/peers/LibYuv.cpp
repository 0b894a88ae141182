#include "PixelBench.h"

#include <libyuv.h>

namespace
{

CTarvexDib& Source(int bits, int number = 0)
{
    return Picture(kWidth, kHeight, bits, number);
}

// Pointer and stride of an image, as libyuv takes them.
#define PIXELS(dib) (dib).GetScanLine(0), (dib).BytesPerScanLine()

void Add(const char* name, const std::function<void()>& work)
{
    AddPeer(name, "libyuv", work);
}

} // namespace

void AddLibYuv()
{
    constexpr libyuv::FilterMode filters[] = {libyuv::kFilterNone, libyuv::kFilterBilinear};
    for (const Scale& s : kScales)
        for (int i = 0; i < 2; ++i)
            AddPeer(ResizeName(s, i, 32), i == 0 ? "libyuv" : "libyuv*", s.width, s.height,
                    [=, filter = filters[i]]
                    {
                        const CTarvexDib& from = Picture(s.fromWidth, s.fromHeight, 32);
                        const CTarvexDib& to = Target(s.width, s.height, 32);
                        libyuv::ARGBScale(PIXELS(from), s.fromWidth, s.fromHeight, PIXELS(to), s.width,
                                          s.height, filter);
                    });

    const auto to = [](int bits) -> CTarvexDib& { return Target(kWidth, kHeight, bits); };
    Add("AlphaBlendPerPixel 32", [=]
        { libyuv::ARGBBlend(PIXELS(Source(32)), PIXELS(Source(32, 2)), PIXELS(to(32)), kWidth, kHeight); });
    for (const int bits : {24, 32})
    {
        const std::string suffix = bits == 24 ? " 24" : " 32";
        AddPeer("AlphaBlend" + suffix, "libyuv",
                [=]
                {
                    libyuv::InterpolatePlane(PIXELS(Source(bits)), PIXELS(Source(bits, 2)), PIXELS(to(bits)),
                                             kWidth * bits / 8, kHeight, 77);
                });
        AddPeer("CopyRect" + suffix, "libyuv",
                [=]
                { libyuv::CopyPlane(PIXELS(Source(bits)), PIXELS(to(bits)), kWidth * bits / 8, kHeight); });
    }
    Add("ShadePerPixel 100% 32",
        [=] {
            libyuv::ARGBMultiply(PIXELS(Source(32)), PIXELS(Source(32, 2)), PIXELS(to(32)), kWidth, kHeight);
        });
    Add("Clone 32",
        [=]
        {
            libyuv::ARGBScale(PIXELS(Source(32)), kWidth / 2, kHeight / 2, PIXELS(to(32)), kWidth, kHeight,
                              libyuv::kFilterNone);
        });
    Add("SetAlphaPlane",
        [=] { libyuv::ARGBCopyYToAlpha(PIXELS(Source(8)), PIXELS(to(32)), kWidth, kHeight); });
    Add("ChangeToTrueColor 24 to 32",
        [=] { libyuv::RGB24ToARGB(PIXELS(Source(24)), PIXELS(to(32)), kWidth, kHeight); });
    Add("ChangeToTrueColor 16 to 32",
        [=] { libyuv::ARGB1555ToARGB(PIXELS(Source(16)), PIXELS(to(32)), kWidth, kHeight); });
}
