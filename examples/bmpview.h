#pragma once

#include "ZelUtil/WinDib.h"

/// Shows the picture in a window of its size. If the window is resized, the picture is scaled. Returns when
/// the window is closed or `seconds` have passed; 0 means no limit. Throws std::runtime_error if no window
/// can be shown. Implemented once for each window system.
void ShowPicture(const CWinDib& picture, const char* title, double seconds);
