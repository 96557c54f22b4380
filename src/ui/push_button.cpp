#include "ui/push_button.h"

#include <commctrl.h>
#include <windowsx.h>

#include "ui/hover.h"
#include "ui/rounded_box.h"
#include "ui/window.h"

namespace {

LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                 UINT_PTR id, DWORD_PTR) {
    switch (message) {
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

// What the system's button does by itself, but without taking the focus.
void FollowPress(HWND button, UINT message, LPARAM point) {
    RECT client{};
    GetClientRect(button, &client);
    const bool inside = PtInRect(&client, {GET_X_LPARAM(point), GET_Y_LPARAM(point)}) != FALSE;
    if (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) {
        SetCapture(button);
        SendMessageW(button, BM_SETSTATE, TRUE, 0);
    } else if (GetCapture() == button && message == WM_MOUSEMOVE) {
        SendMessageW(button, BM_SETSTATE, inside ? TRUE : FALSE, 0);
    } else if (GetCapture() == button && message == WM_LBUTTONUP) {
        ReleaseCapture();
        if (inside) {
            SendMessageW(GetParent(button), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED),
                         reinterpret_cast<LPARAM>(button));
        }
    }
}

LRESULT CALLBACK UnfocusedProcedure(HWND button, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                    UINT_PTR id, DWORD_PTR) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_LBUTTONUP:
            FollowPress(button, message, longParameter);
            return 0;
        case WM_MOUSEMOVE:
            FollowPress(button, message, longParameter);
            break;
        case WM_CAPTURECHANGED:
            SendMessageW(button, BM_SETSTATE, FALSE, 0);
            return 0;
        case WM_NCDESTROY:
            RemoveWindowSubclass(button, &UnfocusedProcedure, id);
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
        WatchHover(button, button);
    }
    return button;
}

void LeaveFocusOnClick(HWND button) {
    SetWindowSubclass(button, &UnfocusedProcedure, 2, 0);
}

TButtonState StateOfButton(const DRAWITEMSTRUCT& draw) {
    const bool enabled = (draw.itemState & ODS_DISABLED) == 0;
    return {enabled, enabled && (draw.itemState & ODS_SELECTED) != 0, enabled && IsHovered(draw.hwndItem),
            (draw.itemState & ODS_FOCUS) != 0};
}

void DrawButtonFace(const DRAWITEMSTRUCT& draw, TScale scale, TColour outside) {
    const TButtonState state = StateOfButton(draw);
    PaintRoundedBox(draw.hDC, draw.rcItem,
                    {.ground = state.pressed   ? Theme::Pressed
                               : state.hovered ? Theme::Hover
                                               : Theme::HeaderGround,
                     .border = state.focused ? Theme::Accent : Theme::ControlBorder,
                     .outside = outside,
                     .thickness = scale(state.focused ? 2 : 1),
                     .radius = scale(kCornerRadius)});
}
