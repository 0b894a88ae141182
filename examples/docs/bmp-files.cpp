#include <ZelUtil/TarvexDib.h>

#include <cstdio>

int main()
{
    CTarvexDib dib;
    if (dib.Load("sheet.ini"))
        return 1; // not a BMP file

    // An 8-bit file whose header states 0 colours, which means all 256.
    if (!dib.Load("palette.bmp"))
        return 1;
    std::printf("colours as the file states them: %d\n",
                (dib.GetDibLength() - 40 - dib.BytesPerScanLine() * dib.Height()) / 4);

    // The pixels still have their colours ...
    CTarvexDib colours(dib);
    if (!colours.ChangeToTrueColor(false))
        return 1;
    const unsigned char* const corner = colours.GetPixelFast(0, 0);
    std::printf("upper left corner: red %d, green %d, blue %d\n", corner[2], corner[1], corner[0]);

    // ... but Save leaves the table out until its count is set.
    if (!dib.SetColorTable(dib.GetColorTable(), 256) || !dib.Save("counted.bmp"))
        return 1;
    if (!dib.Load("counted.bmp") || !dib.ChangeToTrueColor(false))
        return 1;
    std::printf("read back: red %d, green %d, blue %d\n", dib.GetPixelFast(0, 0)[2],
                dib.GetPixelFast(0, 0)[1], dib.GetPixelFast(0, 0)[0]);
    return 0;
}
