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

    // The size at another scale.
    SIZE SizeAt(TScale scale) const;
};

// Of a window that is maximized or minimized, where it would stand otherwise.
std::wstring StorePlace(HWND window);
// Nothing when the text is not one of those.
std::optional<TWindowPlace> RestorePlace(const std::wstring& text);
