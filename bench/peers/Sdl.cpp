#include "PixelBench.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <array>

namespace
{

// An SDL surface over the stored rows of a picture, without a copy. Its blend mode is off.
struct Surface
{
    explicit Surface(const CTarvexDib& dib)
        : surface(SDL_CreateRGBSurfaceWithFormatFrom(dib.GetScanLine(0), dib.Width(), dib.Height(),
                                                     dib.BitCount(), dib.BytesPerScanLine(),
                                                     Format(dib.BitCount())))
    {
        SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_NONE);
        if (surface->format->palette == nullptr)
            return;
        std::array<SDL_Color, 256> colors = {};
        for (int i = 0; i < 1 << dib.BitCount(); ++i)
        {
            const tagRGBQUAD& color = dib.GetColorTable()[i];
            colors[static_cast<std::size_t>(i)] = {color.rgbRed, color.rgbGreen, color.rgbBlue, 255};
        }
        SDL_SetPaletteColors(surface->format->palette, colors.data(), 0, 1 << dib.BitCount());
    }
    ~Surface() { SDL_FreeSurface(surface); }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;

    static Uint32 Format(int bits)
    {
        switch (bits)
        {
        case 1:
            return SDL_PIXELFORMAT_INDEX1MSB;
        case 8:
            return SDL_PIXELFORMAT_INDEX8;
        case 16:
            return SDL_PIXELFORMAT_RGB555;
        case 24:
            return SDL_PIXELFORMAT_BGR24;
        default:
            return SDL_PIXELFORMAT_ARGB8888;
        }
    }

    SDL_Surface* const surface;
};

void Blit(const Surface& from, const Surface& to)
{
    SDL_BlitSurface(from.surface, nullptr, to.surface, nullptr);
}

} // namespace

void AddSdl()
{
    for (const Scale& s : kScales)
        for (const int bits : {24, 32})
            AddPeer(ResizeName(s, 0, bits), "SDL", s.width, s.height,
                    [=]
                    {
                        const Surface from(Picture(s.fromWidth, s.fromHeight, bits)),
                            to(Target(s.width, s.height, bits));
                        SDL_UpperBlitScaled(from.surface, nullptr, to.surface, nullptr);
                    });
    for (const Scale& s : kScales)
        AddPeer(ResizeName(s, 1, 32), "SDL*", s.width, s.height,
                [=]
                {
                    const Surface from(Picture(s.fromWidth, s.fromHeight, 32)),
                        to(Target(s.width, s.height, 32));
                    SDL_SoftStretchLinear(from.surface, nullptr, to.surface, nullptr);
                });
    for (const int bits : {24, 32})
    {
        const std::string suffix = bits == 24 ? " 24" : " 32";
        AddPeer("TransparentBlend" + suffix, "SDL",
                [=]
                {
                    const Surface from(Picture(kWidth, kHeight, bits, 1)), to(Target(kWidth, kHeight, bits));
                    SDL_SetColorKey(from.surface, SDL_TRUE, SDL_MapRGB(from.surface->format, 1, 2, 3));
                    Blit(from, to);
                });
        AddPeer("AlphaBlendPerPixel" + suffix, "SDL",
                [=]
                {
                    const Surface from(Picture(kWidth, kHeight, 32)), to(Target(kWidth, kHeight, bits));
                    SDL_SetSurfaceBlendMode(from.surface, SDL_BLENDMODE_BLEND);
                    Blit(from, to);
                });
        AddPeer("Clone" + suffix, "SDL",
                [=]
                {
                    const Surface from(Picture(kWidth, kHeight, bits)), to(Target(kWidth, kHeight, bits));
                    const SDL_Rect part = {0, 0, kWidth / 2, kHeight / 2};
                    SDL_UpperBlitScaled(from.surface, &part, to.surface, nullptr);
                });
    }
    constexpr int conversions[][2] = {{1, 24}, {8, 24}, {8, 32}, {16, 32}, {24, 32}};
    for (const auto [from, to] : conversions)
        AddPeer(
            "ChangeToTrueColor " + std::to_string(from) + " to " + std::to_string(to), "SDL",
            [fromBits = from, toBits = to]
            { Blit(Surface(Picture(kWidth, kHeight, fromBits)), Surface(Target(kWidth, kHeight, toBits))); });
}
