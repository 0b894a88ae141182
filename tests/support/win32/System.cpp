#include "System.h"

#include <cstring>
#include <io.h>
#include <windows.h>

namespace test
{

const char* const kLogFile = "C:\\Palmora.log";
const char* const kNullDevice = "NUL";
const bool kListsInByteOrder = false;

int OpenDescriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += _get_osfhandle(descriptor) != -1;
    return count;
}

long ThreadRemains()
{
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return static_cast<long>(handles) / 16;
}

bool MakeFifo(const char*)
{
    return false;
}

FullDisk::FullDisk(long) {}
FullDisk::~FullDisk() = default;

bool FullDisk::IsPossible()
{
    return false;
}

NoRights::NoRights() = default;
NoRights::~NoRights() = default;

bool NoRights::ArePossible()
{
    return false;
}

EndlessPipe::EndlessPipe(const std::string&, const std::string&, const std::string&) {}
EndlessPipe::~EndlessPipe() = default;

ProcessLock::ProcessLock() : m_handle(CreateMutexA(nullptr, FALSE, "Global\\zelutil-test"))
{
    WaitForSingleObject(m_handle, INFINITE);
}

ProcessLock::~ProcessLock()
{
    ReleaseMutex(m_handle);
    CloseHandle(m_handle);
}

bool Window::ArePossible()
{
    const HWND window = CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    return DestroyWindow(window) != 0;
}

Window::Window(unsigned width, unsigned height, bool hasFrame)
{
    RECT frame = {0, 0, static_cast<LONG>(width), static_cast<LONG>(height)};
    const DWORD style = hasFrame ? WS_OVERLAPPEDWINDOW : WS_POPUP;
    AdjustWindowRect(&frame, style, FALSE);
    m_frameWidth = static_cast<unsigned>(frame.right - frame.left);
    m_frameHeight = static_cast<unsigned>(frame.bottom - frame.top);
    const HWND window = CreateWindowA("STATIC", "", style, -10, 15, static_cast<int>(m_frameWidth),
                                      static_cast<int>(m_frameHeight), nullptr, nullptr, nullptr, nullptr);
    std::memcpy(m_handle, &window, sizeof window);
}

void Window::Close()
{
    HWND window;
    std::memcpy(&window, m_handle, sizeof window);
    DestroyWindow(window);
}

Window::~Window()
{
    Close();
}

} // namespace test
