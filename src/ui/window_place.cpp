#include "ui/window_place.h"

#include <sstream>

#include "ui/window_scale.h"

namespace {

constexpr int kVersion = 1;
constexpr LONG kLargest = 32767;  // pixels, of a coordinate

bool IsCoordinate(LONG value) {
    return value >= -kLargest && value <= kLargest;
}

}  // namespace

RECT TWindowPlace::AreaAt(TScale scale) const {
    const auto scaled = [&](LONG size) {
        return MulDiv(size, static_cast<int>(scale.Dpi()), static_cast<int>(dpi));
    };
    const RECT start = FittedToMonitor(area);
    return FittedToMonitor({start.left, start.top, start.left + scaled(area.right - area.left),
                            start.top + scaled(area.bottom - area.top)});
}

std::wstring StorePlace(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    if (IsZoomed(window) || IsIconic(window)) {
        WINDOWPLACEMENT placement{};
        placement.length = sizeof(placement);
        GetWindowPlacement(window, &placement);
        area = placement.rcNormalPosition;
    }
    std::wostringstream text;
    text << kVersion << L' ' << area.left << L' ' << area.top << L' ' << area.right << L' ' << area.bottom
         << L' ' << ScaleOfWindow(window).Dpi() << L' ' << (IsZoomed(window) != FALSE);
    return text.str();
}

std::optional<TWindowPlace> RestorePlace(const std::wstring& text) {
    std::wistringstream stream(text);
    int version = 0;
    TWindowPlace place;
    RECT& area = place.area;
    stream >> version >> area.left >> area.top >> area.right >> area.bottom >> place.dpi >> place.isMaximized;
    const bool isPlace = stream && version == kVersion && IsCoordinate(area.left) && IsCoordinate(area.top) &&
                         IsCoordinate(area.right) && IsCoordinate(area.bottom) && area.left < area.right &&
                         area.top < area.bottom && place.dpi >= kStandardDpi &&
                         place.dpi <= 10 * kStandardDpi;
    return isPlace ? std::optional(place) : std::nullopt;
}
