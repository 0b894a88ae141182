#pragma once

// What the timing of the image and that of the other libraries share: the pictures and the clock.

#include "ZelUtil/TarvexDib.h"

#include <cstddef>
#include <functional>
#include <string>

// The same picture at every call: shapes that change slowly, under noise. Pictures of one size differ by
// their number. Those of less than 24 bits have random bytes.
CTarvexDib& Picture(int width, int height, int bits, int number = 0);

// The picture that operations write.
inline CTarvexDib& Target(int width, int height, int bits)
{
    return Picture(width, height, bits, 9);
}

std::size_t ImageBytes(const CTarvexDib& dib);

// A BMP file for the operations that read one, the same that Save makes of a picture of kWidth by kHeight.
const std::string& BmpFile();
// The file that those which write one may write.
const std::string& ScratchFile();

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// A change of size that is timed.
struct Scale
{
    int fromWidth, fromHeight, width, height;
};

constexpr Scale kScales[] = {{640, 480, 1920, 1440},
                             {1024, 1024, 2048, 2048},
                             {4000, 3000, 1000, 750},
                             {800, 600, 1366, 1000},
                             {640, 480, 640, 480}};

constexpr const char* kMethods[] = {"nearest", "bilinear", "cubic"}; // in the order of InterpolMethod

// At equal size the cubic methods of other libraries copy, while this one smooths.
inline bool IsComparable(const Scale& scale, int method)
{
    return method < 2 || scale.fromWidth != scale.width;
}

std::string ResizeName(const Scale& scale, int method, int bits);

using Work = std::function<bool()>;

// Times `work`, which writes a picture of width by height pixels. `prepare` comes once before the clock
// starts, `restore`, which is not timed, before every round; false from `prepare` refuses to time. The label
// names the copy that the speed is seen beside.
void Add(const std::string& name, int width, int height, const Work& work, const Work& prepare,
         const Work& restore = nullptr, const std::string& label = "");

// Another library at the operation `name`. It may do other work (round another way, weigh by fewer bits,
// shade with alpha multiplied in), so its result is not compared.
void AddPeer(const std::string& name, const std::string& peer, int width, int height,
             const std::function<void()>& work);

// Those of kWidth by kHeight.
void AddPeer(const std::string& name, const std::string& peer, const std::function<void()>& work);

// One function for each library; there are those that are installed.
void AddFreeImage();
void AddLibYuv();
void AddOpenCv();
void AddPixman();
void AddSdl();
