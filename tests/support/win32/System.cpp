#include "System.h"

#include <cstring>
#include <windows.h>

namespace test
{

const char* const kLogFile = "C:\\Palmora.log";
const char* const kFullDevice = nullptr;
const bool kListsInByteOrder = false;

long ThreadRemains()
{
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return static_cast<long>(handles);
}

void LockMachine()
{
    WaitForSingleObject(CreateMutexA(nullptr, FALSE, "Global\\zelutil-test"), INFINITE);
}

bool MakeFifo(const char*)
{
    return false;
}

Window::Window(bool hasFrame)
{
    RECT outer = {0, 0, 320, 200};
    const DWORD style = hasFrame ? WS_OVERLAPPEDWINDOW : WS_POPUP;
    AdjustWindowRect(&outer, style, FALSE);
    const int width = outer.right - outer.left, height = outer.bottom - outer.top;
    owner = CreateWindowA("STATIC", "", style, -10, 15, width, height, nullptr, nullptr, nullptr, nullptr);
    std::memcpy(handle, &owner, sizeof owner);
    outerWidth = owner == nullptr ? 0 : static_cast<unsigned long>(width);
    outerHeight = owner == nullptr ? 0 : static_cast<unsigned long>(height);
}

void Window::Close()
{
    DestroyWindow(static_cast<HWND>(owner));
}

} // namespace test
