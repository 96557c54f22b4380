// The scale and the fonts that belong to a window's monitor.
#pragma once

#include <windows.h>

#include <string>

#include "support/handles.h"
#include "ui/dpi.h"

// The scale of the monitor the window stands on; the system's while there is no window.
TScale ScaleOfWindow(HWND window);

enum class TFontWeight { Normal, SemiBold };

// The system's font for messages at a scale, `enlargement` percent of its size.
TFont MakeMessageFont(TScale scale, TFontWeight weight = TFontWeight::Normal, int enlargement = 100);

// The same font with narrower letters, as high as before.
TFont MakeNarrowFont(HFONT font);

// The height of a line in that font, in device pixels.
int TextHeight(HFONT font);

// The width of a text in that font, in device pixels.
int TextWidth(HFONT font, const std::wstring& text);

// Where a window of that size in device pixels stands in the middle of its owner, or of the monitor when the
// owner is null or minimized. No larger than the monitor has room for, and all of it on the monitor.
RECT CentredOn(HWND owner, SIZE size);

// The same area, moved and cut so that all of it is on the monitor that it is nearest to.
RECT FittedToMonitor(const RECT& area);

// The outer size of a window, so that its client area has the given size in device pixels.
SIZE WindowSizeOfClient(SIZE client, DWORD style, DWORD extendedStyle, TScale scale);
