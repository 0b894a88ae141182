#include "PixelBench.h"

#include <cstring>
#include <cwchar>
#include <inttypes.h>
#include <map>

// In a namespace, because FreeImage.h defines some of the types of WinTypes.h again.
namespace freeimage
{
#include <FreeImage.h>
}

using freeimage::FIBITMAP;

namespace
{

// The picture as a FreeImage bitmap, made once.
FIBITMAP* Source(int width, int height, int bits)
{
    static std::map<std::string, FIBITMAP*> pictures;
    FIBITMAP*& picture =
        pictures[std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(bits)];
    if (picture == nullptr)
    {
        const CTarvexDib& dib = Picture(width, height, bits);
        picture = freeimage::FreeImage_Allocate(width, height, bits, 0, 0, 0);
        std::memcpy(freeimage::FreeImage_GetBits(picture), dib.GetScanLine(0), ImageBytes(dib));
        if (bits <= 8)
            std::memcpy(freeimage::FreeImage_GetPalette(picture), dib.GetColorTable(),
                        sizeof(::tagRGBQUAD) << bits);
    }
    return picture;
}

// An operation that allocates its result; the time includes freeing it.
void AddMaker(const std::string& name, int width, int height, const std::function<FIBITMAP*()>& make,
              const char* peer = "FreeImage")
{
    AddPeer(name, peer, width, height, [make] { freeimage::FreeImage_Unload(make()); });
}

} // namespace

void AddFreeImage()
{
    for (const Scale& s : kScales)
        for (const int bits : {24, 32})
            if (Enlarges(s) || Reduces(s)) // at equal size it copies
                AddMaker(
                    ResizeName(s, 2, bits), s.width, s.height,
                    [=]
                    {
                        return freeimage::FreeImage_Rescale(Source(s.fromWidth, s.fromHeight, bits), s.width,
                                                            s.height, freeimage::FILTER_BSPLINE);
                    },
                    Enlarges(s) ? "FreeImage" : "FreeImage*");
    constexpr int conversions[][2] = {{1, 24}, {4, 24}, {8, 24}, {8, 32}, {16, 32}, {24, 32}};
    for (const auto [from, to] : conversions)
        AddMaker("ChangeToTrueColor " + std::to_string(from) + " to " + std::to_string(to), kWidth, kHeight,
                 [fromBits = from, toBits = to]
                 {
                     FIBITMAP* const picture = Source(kWidth, kHeight, fromBits);
                     return toBits == 24 ? freeimage::FreeImage_ConvertTo24Bits(picture)
                                         : freeimage::FreeImage_ConvertTo32Bits(picture);
                 });
    AddMaker("Load from a file 24", kWidth, kHeight,
             [] { return freeimage::FreeImage_Load(freeimage::FIF_BMP, BmpFile().c_str(), 0); });
    AddPeer("Save to a file 24", "FreeImage",
            [] {
                freeimage::FreeImage_Save(freeimage::FIF_BMP, Source(kWidth, kHeight, 24),
                                          ScratchFile().c_str(), 0);
            });
}
