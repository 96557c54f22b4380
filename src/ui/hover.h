// Knows for a control of the system whether the pointer is over it, which it does not tell.
#pragma once

#include <windows.h>

// Watches a control, which keeps no datum of its own (GWLP_USERDATA); the window that shows the difference is
// painted anew whenever it changes.
void WatchHover(HWND control, HWND painted);

bool IsHovered(HWND control);
