#pragma once

// What is timed with: the pictures and the clock.

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

std::string ResizeName(const Scale& scale, int method, int bits);

using Work = std::function<bool()>;

// Times `work`, which writes a picture of width by height pixels. `prepare` comes once before the clock
// starts, `restore`, which is not timed, before every round; false from `prepare` refuses to time. The label
// names the copy that the speed is seen beside.
void Add(const std::string& name, int width, int height, const Work& work, const Work& prepare,
         const Work& restore = nullptr, const std::string& label = "");
