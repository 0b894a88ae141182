// A program of somebody who uses the library, with something of every kind that crosses its border.
#include <ZelUtil/ZelUtil.h>

#include <cstdio>
#include <cstring>

namespace
{

void Check(bool right, const char* what, bool& good)
{
    if (right)
        return;
    std::fprintf(stderr, "wrong: %s\n", what);
    good = false;
}

// Resamples a picture of 2 x 2 pixels to 4 x 4, saves that and loads it again.
void CheckImages(bool& good)
{
    CTarvexDib source;
    CTarvexDib view;
    CTarvexDib loaded;
    Check(source.Create(2, 2, 24) && view.Create(4, 4, 32), "Create", good);
    const unsigned char colors[4][3] = {{1, 2, 3}, {11, 12, 13}, {21, 22, 23}, {31, 32, 33}};
    for (int i = 0; i < 4; ++i)
        std::memcpy(source.GetPixelFast(i % 2, i / 2), colors[i], 3);
    Check(view.Resize(source), "Resize", good);

    // The nearest source pixels of columns and rows 0 to 3 are 0, 1, 1, 1.
    const unsigned char topRow[16] = {1,  2,  3,  255, 11, 12, 13, 255, //
                                      11, 12, 13, 255, 11, 12, 13, 255};
    const unsigned char bottomRow[16] = {21, 22, 23, 255, 31, 32, 33, 255, //
                                         31, 32, 33, 255, 31, 32, 33, 255};
    Check(view.Save("picture.bmp") && loaded.Load("picture.bmp"), "Save and Load", good);
    Check(loaded.Width() == 4 && loaded.Height() == 4 && loaded.BitCount() == 32, "size", good);
    Check(loaded.GetDibLength() == 40 + 4 * 4 * 4, "length", good);
    if (good)
    {
        Check(std::memcmp(loaded.GetScanLine(3), topRow, 16) == 0, "top row", good);
        Check(std::memcmp(loaded.GetScanLine(0), bottomRow, 16) == 0, "bottom row", good);
    }
}

// An error that the library throws and the program catches, by its type.
void CheckErrors(bool& good)
{
    unsigned char last[16];
    std::memset(last, 0xFF, sizeof last);
    try
    {
        const ZelId beyond(last);
        Check(false, "no error", good);
    }
    catch (const EOutOfBounds&)
    {
    }
}

} // namespace

int main()
{
    bool good = true;
    CheckImages(good);
    CheckErrors(good);
    // The system's graphics calls, windows and libraries.
    Check(CWinDib().CreateDDB() == nullptr, "CreateDDB", good);
    Check(!OSDependant::IsWindowExisting(nullptr), "IsWindowExisting", good);
    Check(OSDependant::LoadLib("no such library") == nullptr, "LoadLib", good);
    return good ? 0 : 1;
}
