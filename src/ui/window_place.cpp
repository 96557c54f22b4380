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

SIZE TWindowPlace::SizeAt(TScale scale) const {
    const auto scaled = [&](LONG size) {
        return MulDiv(size, static_cast<int>(scale.Dpi()), static_cast<int>(dpi));
    };
    return {scaled(area.right - area.left), scaled(area.bottom - area.top)};
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
         << L' ' << ScaleOfWindow(window).Dpi();
    return text.str();
}

std::optional<TWindowPlace> RestorePlace(const std::wstring& text) {
    std::wistringstream stream(text);
    int version = 0;
    TWindowPlace place;
    RECT& area = place.area;
    stream >> version >> area.left >> area.top >> area.right >> area.bottom >> place.dpi;
    const bool isPlace = stream && version == kVersion && IsCoordinate(area.left) && IsCoordinate(area.top) &&
                         IsCoordinate(area.right) && IsCoordinate(area.bottom) && area.left < area.right &&
                         area.top < area.bottom && place.dpi >= kStandardDpi &&
                         place.dpi <= 10 * kStandardDpi;
    return isPlace ? std::optional(place) : std::nullopt;
}
