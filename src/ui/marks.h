// The small marks of check boxes, radio buttons and grid rows.
#pragma once

#include "ui/icon_canvas.h"

enum class TMark { CheckOff, CheckOn, RadioOff, RadioOn, CurrentRow, EditedRow, Warning };

// Width and height of a mark at a scale of 100 %.
inline constexpr int kMarkSize = 16;

// Draws a mark, `size` pixels wide and high.
TIconCanvas DrawMark(TMark mark, int size);
