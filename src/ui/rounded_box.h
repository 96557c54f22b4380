// The boxes of buttons, fields and focus rings.
#pragma once

#include <windows.h>

#include "ui/theme.h"

// The radius of their corners at a scale of 100 %.
inline constexpr int kCornerRadius = 4;

struct TRoundedBox {
    TColour ground;
    TColour border;
    TColour outside;    // what shows beyond the corners
    int thickness = 1;  // of the border, in device pixels
    int radius = 0;     // of the corners' outer edge, in device pixels
};

// Paints all of an area: a box with smooth round corners.
void PaintRoundedBox(HDC context, const RECT& area, const TRoundedBox& box);
