// The push buttons of every window, tool bars included.
#pragma once

#include <windows.h>

#include <string>

#include "ui/dpi.h"
#include "ui/theme.h"

enum class TButtonKind {
    Push,
    Toggle,  // BM_SETCHECK tells it, and so screen readers, whether it is on; a click changes nothing by
             // itself
};

// Creates a button of the system, so that the Tab key, the space bar and screen readers know it. Its parent
// draws it (WM_DRAWITEM) and is told of clicks (WM_COMMAND) with the identifier. Null when the system
// refuses.
HWND CreatePushButton(HWND parent, int id, const std::wstring& name, DWORD style = 0,
                      TButtonKind kind = TButtonKind::Push);

// For a button that paints itself, behind the system's handling of each message: after some of them the
// system has drawn it, past WM_PAINT.
void RepaintButtonAfter(HWND button, UINT message);

// Lets clicks of the mouse leave the focus where it is: else the next Enter or Space would press the button
// again.
void LeaveFocusOnClick(HWND button);

// What a button looks like at the moment.
struct TButtonState {
    bool enabled = true;
    bool pressed = false;
    bool hovered = false;  // never while it is disabled
    bool focused = false;
};

TButtonState StateOfButton(const DRAWITEMSTRUCT& draw);

// Draws ground and frame of a button that stands by itself, on a ground of that colour.
void DrawButtonFace(const DRAWITEMSTRUCT& draw, TScale scale, TColour outside = Theme().windowGround);
