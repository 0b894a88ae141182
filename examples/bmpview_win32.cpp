#include "bmpview.h"

#include <stdexcept>

namespace
{

LRESULT CALLBACK HandleMessage(HWND window, UINT message, WPARAM wide, LPARAM param)
{
    switch (message)
    {
    case WM_PAINT:
    {
        const auto* picture = reinterpret_cast<const CWinDib*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        RECT area;
        GetClientRect(window, &area);
        PAINTSTRUCT paint;
        const HDC dc = BeginPaint(window, &paint);
        SetStretchBltMode(dc, COLORONCOLOR);
        picture->StretchDraw(dc, 0, 0, area.right, area.bottom);
        EndPaint(window, &paint);
        return 0;
    }
    case WM_TIMER:
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, wide, param);
    }
}

} // namespace

void ShowPicture(const CWinDib& picture, const char* title, double seconds)
{
    WNDCLASSA kind = {};
    kind.style = CS_HREDRAW | CS_VREDRAW;
    kind.lpfnWndProc = HandleMessage;
    kind.hInstance = GetModuleHandleA(nullptr);
    kind.hCursor = LoadCursor(nullptr, IDC_ARROW);
    kind.lpszClassName = "bmpview";
    RegisterClassA(&kind);

    RECT frame = {0, 0, picture.Width(), picture.Height()};
    AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, FALSE);
    const HWND window = CreateWindowA(kind.lpszClassName, title, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                      CW_USEDEFAULT, frame.right - frame.left, frame.bottom - frame.top,
                                      nullptr, nullptr, kind.hInstance, nullptr);
    if (window == nullptr)
        throw std::runtime_error("the system gives no window");
    SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&picture));
    if (seconds > 0.0)
        SetTimer(window, 1, static_cast<UINT>(seconds * 1000.0), nullptr);
    ShowWindow(window, SW_SHOWNORMAL);

    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0)
        DispatchMessageA(&message);
}
