// A user's program, with something of every kind that crosses the library's border.
#include <ZelUtil/ZelUtil.h>

#include <cstdio>
#include <cstring>

namespace
{

int faults = 0;

void Check(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", what);
    ++faults;
}

// Resamples 2 x 2 pixels to 4 x 4, saves the result and loads it again.
void CheckImages()
{
    CTarvexDib source, view, loaded;
    Check(source.Create(2, 2, 24) && view.Create(4, 4, 32), "Create");
    for (int i = 0; i < 4; ++i)
        std::memset(source.GetPixelFast(i % 2, i / 2), 10 * i, 3);
    Check(view.Resize(source), "Resize");
    Check(view.Save("picture.bmp") && loaded.Load("picture.bmp"), "Save and Load");
    Check(loaded.GetDibLength() == 40 + 4 * 4 * 4, "size");

    // The nearest source pixels of columns and rows 0 to 3 are 0, 1, 1, 1.
    for (int i = 0; faults == 0 && i < 16; ++i)
        Check(*loaded.GetPixelFast(i % 4, i / 4) == (i % 4 > 0 ? 10 : 0) + (i / 4 > 0 ? 20 : 0), "pixels");
}

// The library throws an error and the program catches it by its type.
void CheckErrors()
{
    unsigned char last[16];
    std::memset(last, 0xFF, sizeof last);
    try
    {
        const ZelId beyond(last);
        Check(false, "no error");
    }
    catch (const EOutOfBounds&)
    {
    }
}

} // namespace

int main()
{
    CheckImages();
    CheckErrors();
    // The system's graphics calls, windows and libraries.
    Check(CWinDib().CreateDDB() == nullptr, "CreateDDB");
    Check(!OSDependant::IsWindowExisting(nullptr), "IsWindowExisting");
    Check(OSDependant::LoadLib("no such library") == nullptr, "LoadLib");
    return faults == 0 ? 0 : 1;
}
