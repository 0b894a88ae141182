#include <ZelUtil/TarvexDib.h>

#include <cstdio>

int main()
{
    CTarvexDib dib;
    if (dib.Load("sheet.ini"))
        return 1; // that is no BMP file

    // A file of 8 bits that states 0 colours and means all 256.
    if (!dib.Load("palette.bmp"))
        return 1;
    std::printf("colours as the file states them: %d\n",
                (dib.GetDibLength() - 40 - dib.BytesPerScanLine() * dib.Height()) / 4);

    // Its pixels find their colours all the same ...
    CTarvexDib colours(dib);
    if (!colours.ChangeToTrueColor(false))
        return 1;
    const unsigned char* const corner = colours.GetPixelFast(0, 0);
    std::printf("upper left corner: red %d, green %d, blue %d\n", corner[2], corner[1], corner[0]);

    // ... but to save them the table has to be counted.
    if (!dib.SetColorTable(dib.GetColorTable(), 256) || !dib.Save("counted.bmp"))
        return 1;
    if (!dib.Load("counted.bmp") || !dib.ChangeToTrueColor(false))
        return 1;
    std::printf("read back: red %d, green %d, blue %d\n", dib.GetPixelFast(0, 0)[2],
                dib.GetPixelFast(0, 0)[1], dib.GetPixelFast(0, 0)[0]);
    return 0;
}
