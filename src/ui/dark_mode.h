// Makes the parts of a window that the system draws as dark as the rest, as far as the system can.
#pragma once

#include <windows.h>

// The caption and the frame.
void UseDarkFrame(HWND window);

// The scroll bars of a list, a grid or a field; the system's own while high contrast is on.
void UseDarkScrollBars(HWND control);

// Takes the visual style off a control, so that it obeys the colours set for it.
void RemoveVisualStyle(HWND control);
