// The program's icons: one style, drawn from the same lines at every scale.
#pragma once

#include "ui/icon_canvas.h"

// The images of actions, by their number in the image list.
enum class TImageIndex {
    Close = 0,
    StartCopy = 1,
    StopCopy = 2,
    Configure = 3,
    Reindex = 4,
    Folder = 5,
    ShutDownChecked = 6,
    ShutDown = 7,
    Update = 8,
};
inline constexpr int kImageCount = 9;

// Width and height of the images at a scale of 100 %.
inline constexpr int kImageSize = 24;

enum class TImageState { Normal, Disabled };

// Draws an image, `size` pixels wide and high.
TIconCanvas DrawImage(TImageIndex image, int size, TImageState state);
