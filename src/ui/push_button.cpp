#include "ui/push_button.h"

#include <commctrl.h>

#include "ui/device_context.h"
#include "ui/window.h"

namespace {

// A button's own datum: whether the pointer is over it, which an owner-drawn one is not told.
bool IsHovered(HWND button) {
    return GetWindowLongPtrW(button, GWLP_USERDATA) != 0;
}

void SetHovered(HWND button, bool hovered) {
    SetWindowLongPtrW(button, GWLP_USERDATA, hovered ? 1 : 0);
    InvalidateRect(button, nullptr, FALSE);
}

LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                 UINT_PTR id, DWORD_PTR) {
    switch (message) {
        case WM_MOUSEMOVE:
            if (!IsHovered(button)) {
                SetHovered(button, true);
                TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, button, 0};
                TrackMouseEvent(&track);
            }
            break;
        case WM_MOUSELEAVE:
            SetHovered(button, false);
            break;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_NCDESTROY:
            RemoveWindowSubclass(button, &ButtonProcedure, id);
            break;
        default:
            break;
    }
    return DefSubclassProc(button, message, wordParameter, longParameter);
}

}  // namespace

HWND CreatePushButton(HWND parent, int id, const std::wstring& name, DWORD style) {
    const HWND button = CreateChild(parent, L"BUTTON", name, WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW | style);
    if (button != nullptr) {
        SetWindowLongPtrW(button, GWLP_ID, id);
        SetWindowSubclass(button, &ButtonProcedure, 1, 0);
    }
    return button;
}

TButtonState StateOfButton(const DRAWITEMSTRUCT& draw) {
    const bool enabled = (draw.itemState & ODS_DISABLED) == 0;
    return {enabled, enabled && (draw.itemState & ODS_SELECTED) != 0, enabled && IsHovered(draw.hwndItem),
            (draw.itemState & ODS_FOCUS) != 0};
}

void DrawButtonFace(const DRAWITEMSTRUCT& draw, TScale scale) {
    const TButtonState state = StateOfButton(draw);
    FillArea(draw.hDC, draw.rcItem,
             state.pressed   ? Theme::Pressed
             : state.hovered ? Theme::Hover
                             : Theme::HeaderGround);
    FrameArea(draw.hDC, draw.rcItem, state.focused ? Theme::Accent : Theme::Border,
              scale(state.focused ? 2 : 1));
}
