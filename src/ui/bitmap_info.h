// The description of a picture for GDI.
#pragma once

#include <windows.h>

#include "ui/icon_canvas.h"

// Describes the pixels of a canvas: 32 bits each, rows from the top.
inline BITMAPINFO BitmapInfoOf(const TIconCanvas& canvas) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = canvas.Size();
    info.bmiHeader.biHeight = -canvas.Size();
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    return info;
}
