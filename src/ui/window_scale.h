// The scale and the fonts that belong to a window's monitor.
#pragma once

#include <windows.h>

#include "support/handles.h"
#include "ui/dpi.h"

// The scale of the monitor the window stands on; the system's while there is no window.
TScale ScaleOfWindow(HWND window);

enum class TFontWeight { Normal, SemiBold };

// The system's font for messages at a scale, `enlargement` percent of its size.
TFont MakeMessageFont(TScale scale, TFontWeight weight = TFontWeight::Normal, int enlargement = 100);

// The height of a line in that font, in device pixels.
int TextHeight(HFONT font);

// The outer size of a window, so that its client area has the given size in device pixels.
SIZE WindowSizeOfClient(SIZE client, DWORD style, DWORD extendedStyle, TScale scale);
