// The icons as bitmaps of one scale.
#pragma once

#include <windows.h>

#include <map>
#include <utility>

#include "support/handles.h"
#include "ui/dpi.h"
#include "ui/icons.h"

// Keeps the images that were drawn, each made when it is first needed.
class TImages {
public:
    explicit TImages(TScale scale = TScale()) : size_(scale(kImageSize)) {}

    // Width and height of every image in device pixels.
    int Size() const { return size_; }
    // Drops what was drawn for the former scale.
    void SetScale(TScale scale);
    void Draw(HDC context, POINT topLeft, TImageIndex image, TImageState state);

private:
    HBITMAP Bitmap(TImageIndex image, TImageState state);

    int size_;
    std::map<std::pair<TImageIndex, TImageState>, TBitmap> bitmaps_;
};
