// The description of a picture for GDI.
#pragma once

#include <windows.h>

#include "ui/icon_canvas.h"

// Describes a square of that many pixels on each side: 32 bits each, rows from the top.
inline BITMAPINFO BitmapInfoOf(int size) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size;
    info.bmiHeader.biHeight = -size;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    return info;
}

inline BITMAPINFO BitmapInfoOf(const TIconCanvas& canvas) {
    return BitmapInfoOf(canvas.Size());
}
