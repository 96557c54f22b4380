// Brings marks to the screen.
#pragma once

#include <windows.h>

#include "ui/dpi.h"
#include "ui/marks.h"

// Draws a mark in the middle of an area whose ground is already painted in this colour.
void PaintMark(HDC context, const RECT& area, TMark mark, TScale scale, TColour ground);
