#include <ZelUtil/WinDib.h>

#include <cstdio>

int main()
{
    CWinDib picture, captured;
    if (!picture.Load("map.bmp"))
        return 1;

    // A memory context, and a bitmap in the screen's format to draw on. Drawing into the context of a window
    // works in the same way.
    CDC memory;
    CBitmap surface;
    const HDC screen = GetDC(nullptr);
    const bool made =
        memory.CreateCompatibleDC(nullptr) && surface.Attach(CreateCompatibleBitmap(screen, 72, 48));
    ReleaseDC(nullptr, screen);
    if (!made)
        return 1;

    const HGDIOBJ previous = SelectObject(memory, surface.GetSafeHandle());
    SetStretchBltMode(memory, COLORONCOLOR);
    picture.StretchDraw(memory, 0, 0, 72, 48);
    const bool done = captured.Capture(memory, CRect(0, 0, 72, 48));
    SelectObject(memory, previous); // a bitmap is destroyed only once no context selects it
    if (!done)
        return 1;

    std::printf("%d x %d of %d bits\n", captured.Width(), captured.Height(), captured.BitCount());
    return captured.Save("captured.bmp") ? 0 : 1;
}
