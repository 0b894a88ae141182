#include "System.h"

#include <cstring>
#include <windows.h>

std::string test::LockLog()
{
    WaitForSingleObject(CreateMutexA(nullptr, FALSE, "Global\\zelutil-test"), INFINITE);
    return "C:\\Palmora.log";
}

test::Window::Window(bool hasFrame)
{
    RECT outer = {0, 0, 320, 200};
    const DWORD style = hasFrame ? WS_OVERLAPPEDWINDOW : WS_POPUP;
    AdjustWindowRect(&outer, style, FALSE);
    const int width = outer.right - outer.left, height = outer.bottom - outer.top;
    const HWND window =
        CreateWindowA("STATIC", "", style, -10, 15, width, height, nullptr, nullptr, nullptr, nullptr);
    std::memcpy(handle, &window, sizeof window);
    outerWidth = window == nullptr ? 0 : static_cast<unsigned long>(width);
    outerHeight = window == nullptr ? 0 : static_cast<unsigned long>(height);
}
