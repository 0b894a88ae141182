#pragma once

// Shared by the benchmark of the image and those of the other libraries: the pictures and the clock.

#include "ZelUtil/TarvexDib.h"

#include <cstddef>
#include <functional>
#include <string>

// Returns the same picture for the same arguments: smooth shapes under noise, or random bytes below 24 bits.
// `number` tells pictures of the same size and depth apart.
CTarvexDib& Picture(int width, int height, int bits, int number = 0);

// The picture that the timed operations write.
inline CTarvexDib& Target(int width, int height, int bits)
{
    return Picture(width, height, bits, 9);
}

std::size_t ImageBytes(const CTarvexDib& dib);

// The path of a BMP file to read: a 24-bit picture of kWidth by kHeight, as Save writes it.
const std::string& BmpFile();
// The path of a file that the timed operations may write.
const std::string& ScratchFile();

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// One case of Resize.
struct Scale
{
    int fromWidth, fromHeight, width, height;
};

constexpr Scale kScales[] = {{1280, 853, 1536, 1130},  {800, 600, 1366, 1000}, {640, 480, 1920, 1440},
                             {1024, 1024, 2048, 2048}, {640, 480, 640, 480},   {1920, 1080, 1366, 768},
                             {4000, 3000, 1000, 750}};

constexpr const char* kMethods[] = {"nearest", "bilinear", "cubic"}; // in the order of InterpolMethod

inline bool Enlarges(const Scale& scale)
{
    return scale.width > scale.fromWidth;
}

inline bool Reduces(const Scale& scale)
{
    return scale.width < scale.fromWidth;
}

std::string ResizeName(const Scale& scale, int method, int bits);

using Work = std::function<bool()>;

// Times `work`, which writes a picture of width by height pixels. `prepare` runs once before the clock
// starts; if it returns false, nothing is timed. `restore` runs before every round and is not timed. `label`
// names the memcpy benchmark to compare with.
void Add(const std::string& name, int width, int height, const Work& work, const Work& prepare,
         const Work& restore = nullptr, const std::string& label = "");

// Times another library at the operation `name`. It may round differently or blend with premultiplied alpha,
// so its result is not compared. A star at the end of `peer` says that it does other work, which may be more
// or less: it interpolates with weights of 7 bits, filters when it reduces, or uses another cubic kernel.
void AddPeer(const std::string& name, const std::string& peer, int width, int height,
             const std::function<void()>& work);

// The same for pictures of kWidth by kHeight.
void AddPeer(const std::string& name, const std::string& peer, const std::function<void()>& work);

// One function per library, defined only if the library is installed.
void AddFreeImage();
void AddLibYuv();
void AddOpenCv();
void AddPixman();
void AddSdl();
void AddStb();
