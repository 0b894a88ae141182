#pragma once

#include "ZelUtil/WinDib.h"

/// Shows the picture in a window of its size, scaled when the window is resized, until the window is closed
/// or `seconds` have passed; 0 stands for no limit. Throws std::runtime_error where no window can be shown.
/// Each system has a source of its own.
void ShowPicture(const CWinDib& picture, const char* title, double seconds);
