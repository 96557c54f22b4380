// Remembers where a window stood.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "ui/dpi.h"

// Place and size of a window, in device pixels of a scale.
struct TWindowPlace {
    RECT area{};
    unsigned dpi = kStandardDpi;
    bool isMaximized = false;

    // The same at another scale, on the monitor that it is nearest to and no larger than that.
    RECT AreaAt(TScale scale) const;
};

// Of a window that is maximized or minimized, where it would stand otherwise.
std::wstring StorePlace(HWND window);
// Nothing when the text is not one of those.
std::optional<TWindowPlace> RestorePlace(const std::wstring& text);
