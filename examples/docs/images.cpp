#include <ZelUtil/TarvexDib.h>

#include <cstdio>
#include <cstring>

int main()
{
    CTarvexDib dib;
    if (!dib.Create(3, 2, 24))
        return 1;
    std::memset(dib.GetScanLine(0), 0, 24); // Create does not initialise 24-bit pixels

    unsigned char* const pixel = dib.GetPixelFast(2, 0); // the last pixel of the top row
    pixel[0] = 30;                                       // blue
    pixel[1] = 20;                                       // green
    pixel[2] = 10;                                       // red

    std::printf("%d bytes a row, %d of them padding\n", dib.BytesPerScanLine(), dib.Padding());
    std::printf("the pixel is at byte %d\n", static_cast<int>(pixel - dib.GetScanLine(0)));

    // Rows are stored from the bottom up: the top row of the picture is the last stored row.
    std::printf("red is %d\n", dib.GetScanLine(1)[2 * dib.PixelSize() + 2]);

    CTarvexDib copy(dib); // a deep copy
    copy.GetPixelFast(2, 0)[2] = 99;
    std::printf("red is still %d\n", dib.GetPixelFast(2, 0)[2]);
    return 0;
}
