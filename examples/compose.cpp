// Composes a picture: loads a BMP file through the cache, resamples and shades it, adds a tinted inset, an
// overlay and a frame, draws the result into a device context and captures it, saves it and reads it back.
//
//     compose PICTURE.bmp OVERLAY.bmp OUTPUT.bmp [WIDTH HEIGHT]
//
// The picture may have any depth; the overlay must have 32 bits, with alpha. Exit code 0: done, 1: failed,
// 2: wrong usage.

#include "ZelUtil/ZelUtil.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace
{

void Require(bool done, const std::string& what)
{
    if (!done)
        throw std::runtime_error(what);
}

// Runs one step and prints its time. Throws if the step returns false or null.
template <typename Step>
void Timed(const char* name, const Step& step)
{
    const auto start = std::chrono::steady_clock::now();
    Require(step(), std::string("failed to ") + name);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::printf("  %-34s %8.3f ms\n", name, time.count());
}

// The image has 24 bits and the rectangle at least one pixel.
void FillRect(const CTarvexDib& dib, int left, int top, int right, int bottom, RGBQUAD color)
{
    const unsigned char pixel[3] = {color.rgbBlue, color.rgbGreen, color.rgbRed};
    for (int x = left; x < right; ++x)
        std::memcpy(dib.GetPixelFast(x, top), pixel, sizeof pixel);
    for (int y = top + 1; y < bottom; ++y)
        std::memcpy(dib.GetPixelFast(left, y), dib.GetPixelFast(left, top),
                    sizeof pixel * static_cast<std::size_t>(right - left));
}

// A light that fades towards the corners, drawn small and enlarged.
bool DrawLight(CTarvexDib& light, int width, int height)
{
    constexpr int kSize = 33;
    CTarvexDib small;
    if (!small.Create(kSize, kSize, 24) || !light.Create(width, height, 24))
        return false;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            const int dx = x - kSize / 2, dy = y - kSize / 2;
            const int value = 255 - std::min(dx * dx + dy * dy, 512) / 4;
            std::memset(small.GetPixelFast(x, y), value, 3);
        }
    light.SetupInterpolMethod(CTarvexDib::InterpolBiLinear);
    return light.Resize(small);
}

// A transparent layer with the overlay in its upper left corner, at a third of the picture's height.
bool PlaceOverlay(CTarvexDib& layer, CTarvexDib& overlay, int width, int height, int margin)
{
    CTarvexDib badge;
    const int size = height / 3;
    const double ratio = static_cast<double>(overlay.Width()) / overlay.Height();
    const int badgeWidth = static_cast<int>(std::clamp(size * ratio, 1.0, static_cast<double>(width)));
    if (!badge.Create(badgeWidth, size, 32) || !layer.Create(width, height, 32))
        return false;
    badge.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    return badge.Resize(overlay) && layer.AlphaAlpha(0) &&
           layer.CopyRect(margin, margin, badge, 0, 0, badge.Width(), badge.Height());
}

// A frame around the whole picture. Its inside has the key colour, magenta, so that the picture shows there.
bool DrawFrame(CTarvexDib& frame, int width, int height, int border)
{
    if (!frame.Create(width, height, 24))
        return false;
    FillRect(frame, 0, 0, width, height, {60, 36, 22, 0});
    FillRect(frame, border / 2, border / 2, width - border / 2, height - border / 2, {170, 215, 235, 0});
    FillRect(frame, border, border, width - border, height - border, {255, 0, 255, 0});
    return true;
}

// The picture at a quarter of its width and height, tinted.
bool DrawInset(CTarvexDib& inset, const CTarvexDib& canvas)
{
    return inset.Create(canvas.Width() / 4, canvas.Height() / 4, 32) &&
           inset.Clone(canvas, 0, 0, canvas.Width(), canvas.Height()) &&
           inset.ColorMix(0.85F, 0.55F, 0.20F, 0.5F);
}

bool SamePixels(const CTarvexDib& a, const CTarvexDib& b)
{
    return a.GetDibLength() == b.GetDibLength() && a.Height() == b.Height() &&
           std::memcmp(a.GetScanLine(0), b.GetScanLine(0),
                       static_cast<std::size_t>(a.BytesPerScanLine()) *
                           static_cast<std::size_t>(a.Height())) == 0;
}

// Draws the picture into a memory context, as a program would into its window, and captures it from there.
bool DrawAndCapture(CWinDib& captured, const CWinDib& picture)
{
    const HDC screen = GetDC(nullptr);
    CBitmap surface;
    surface.Attach(CreateCompatibleBitmap(screen, picture.Width(), picture.Height()));
    ReleaseDC(nullptr, screen);

    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    const HGDIOBJ previous = SelectObject(memory, surface.GetSafeHandle());
    picture.StretchDraw(memory, 0, 0, picture.Width(), picture.Height());
    const bool done = captured.Capture(memory, CRect(0, 0, picture.Width(), picture.Height()));
    SelectObject(memory, previous);
    return done;
}

void Compose(const char* picturePath, const char* overlayPath, const char* outputPath, int width, int height)
{
    BitmapCache cache;
    CTarvexDib *picture = nullptr, *overlay = nullptr;
    Timed("load both files", [&]
          { return (picture = cache.getBitmap(picturePath)) && (overlay = cache.getBitmap(overlayPath)); });
    std::printf("  picture %d x %d of %d bits, overlay %d x %d of %d bits\n", picture->Width(),
                picture->Height(), picture->BitCount(), overlay->Width(), overlay->Height(),
                overlay->BitCount());
    Require(overlay->BitCount() == 32, "the overlay must have 32 bits");

    const int border = std::max(std::min(width, height) / 40, 2);
    const int margin = 2 * border;
    CTarvexDib source(*picture); // a copy: other users of the cached image see no change
    CWinDib canvas, captured;
    CTarvexDib light, layer, frame, inset;
    Timed("convert to true colour", [&] { return source.ChangeToTrueColor(true); });
    Timed("create the canvas", [&] { return canvas.Create(width, height, 32); });
    canvas.SetupInterpolMethod(CTarvexDib::InterpolCubic);
    Timed("resample by cubic", [&] { return canvas.Resize(source); });
    Timed("draw the light", [&] { return DrawLight(light, width, height); });
    Timed("shade the picture", [&] { return canvas.ShadePerPixel(&light, &canvas, 60); });
    Timed("draw the tinted inset", [&] { return DrawInset(inset, canvas); });
    Timed("copy the inset into its corner",
          [&]
          {
              return canvas.CopyRect(margin, height - margin - inset.Height(), inset, 0, 0, inset.Width(),
                                     inset.Height());
          });
    Timed("place the overlay", [&] { return PlaceOverlay(layer, *overlay, width, height, margin); });
    Timed("blend the overlay per pixel", [&] { return canvas.AlphaBlendPerPixel(&layer, &canvas); });
    Timed("draw the frame", [&] { return DrawFrame(frame, width, height, border); });
    Timed("key the frame over the picture",
          [&] { return canvas.TransparentBlend(&frame, &canvas, 255, 0, 255) && canvas.resetAlpha(); });

    Timed("draw into a device context and back", [&] { return DrawAndCapture(captured, canvas); });
    Require(SamePixels(captured, canvas), "the device changed the picture");

    CTarvexDib readBack;
    Timed("save", [&] { return captured.Save(outputPath); });
    Timed("read back", [&] { return readBack.Load(outputPath); });
    Require(SamePixels(readBack, canvas), "the file does not hold what was saved");
    std::printf("  %s: %d x %d of %d bits, %d bytes\n", outputPath, readBack.Width(), readBack.Height(),
                readBack.BitCount(), 14 + readBack.GetDibLength());
    cache.releaseBitmap(picture);
    cache.releaseBitmap(overlay);
}

} // namespace

int main(int argc, char** argv)
{
    const int width = argc == 6 ? std::atoi(argv[4]) : 720;
    const int height = argc == 6 ? std::atoi(argv[5]) : 480;
    if ((argc != 4 && argc != 6) || width < 16 || height < 16 || width > 16384 || height > 16384)
    {
        std::fputs("usage: compose PICTURE.bmp OVERLAY.bmp OUTPUT.bmp [WIDTH HEIGHT]\n"
                   "       width and height from 16 to 16384, 720 and 480 where not given\n",
                   stderr);
        return 2;
    }
    try
    {
        Compose(argv[1], argv[2], argv[3], width, height);
        return 0;
    }
    catch (const MemoryError& error)
    {
        std::fprintf(stderr, "compose: %s: %s\n", error.getMethode().c_str(), error.getMsg().c_str());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "compose: %s\n", error.what());
    }
    return 1;
}
