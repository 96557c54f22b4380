#include "ui/hover.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kSubclass = 2;

void SetHovered(HWND control, HWND painted, bool hovered) {
    SetWindowLongPtrW(control, GWLP_USERDATA, hovered ? 1 : 0);
    InvalidateRect(painted, nullptr, FALSE);
}

LRESULT CALLBACK HoverProcedure(HWND control, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                UINT_PTR id, DWORD_PTR data) {
    const auto painted = reinterpret_cast<HWND>(data);
    if (message == WM_MOUSEMOVE && !IsHovered(control)) {
        SetHovered(control, painted, true);
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, control, 0};
        TrackMouseEvent(&track);
    } else if (message == WM_MOUSELEAVE) {
        SetHovered(control, painted, false);
    } else if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(control, &HoverProcedure, id);
    }
    return DefSubclassProc(control, message, wordParameter, longParameter);
}

}  // namespace

void WatchHover(HWND control, HWND painted) {
    SetWindowSubclass(control, &HoverProcedure, kSubclass, reinterpret_cast<DWORD_PTR>(painted));
}

bool IsHovered(HWND control) {
    return GetWindowLongPtrW(control, GWLP_USERDATA) != 0;
}
