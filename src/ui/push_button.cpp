#include "ui/push_button.h"

#include <commctrl.h>
#include <windowsx.h>

#include "ui/device_context.h"
#include "ui/hover.h"
#include "ui/rounded_box.h"
#include "ui/window.h"

namespace {

LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                 UINT_PTR id, DWORD_PTR) {
    switch (message) {
        case WM_ERASEBKGND:
            return TRUE;
        case WM_LBUTTONDBLCLK:
            // An owner-drawn button would make no click of the second of two fast ones.
            message = WM_LBUTTONDOWN;
            break;
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

void LetParentPaint(HWND button) {
    const TPaintContext paint(button);
    const LRESULT state = SendMessageW(button, BM_GETSTATE, 0, 0);
    DRAWITEMSTRUCT draw{};
    draw.CtlType = ODT_BUTTON;
    draw.CtlID = static_cast<UINT>(GetDlgCtrlID(button));
    draw.itemAction = ODA_DRAWENTIRE;
    draw.itemState = (IsWindowEnabled(button) ? 0U : ODS_DISABLED) |
                     ((state & BST_PUSHED) != 0 ? ODS_SELECTED : 0U) |
                     (GetFocus() == button ? ODS_FOCUS : 0U);
    draw.hwndItem = button;
    draw.hDC = paint.Get();
    draw.rcItem = paint.Client();
    SendMessageW(GetParent(button), WM_DRAWITEM, draw.CtlID, reinterpret_cast<LPARAM>(&draw));
}

// An owner-drawn button cannot be one that is on or off, so what owner drawing does is done here for a check
// box.
LRESULT CALLBACK ToggleProcedure(HWND button, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                 UINT_PTR id, DWORD_PTR) {
    if (message == WM_PAINT) {
        RunGuarded([button] { LetParentPaint(button); });
        return 0;
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(button, &ToggleProcedure, id);
    }
    const LRESULT result = DefSubclassProc(button, message, wordParameter, longParameter);
    RepaintButtonAfter(button, message);
    return result;
}

}  // namespace

HWND CreatePushButton(HWND parent, int id, const std::wstring& name, DWORD style, TButtonKind kind) {
    const bool isToggle = kind == TButtonKind::Toggle;
    const DWORD type = isToggle ? BS_CHECKBOX | BS_PUSHLIKE : BS_OWNERDRAW;
    const HWND button = CreateChild(parent, L"BUTTON", name, WS_VISIBLE | WS_TABSTOP | type | style);
    if (button != nullptr) {
        SetWindowLongPtrW(button, GWLP_ID, id);
        SetWindowSubclass(button, &ButtonProcedure, 1, 0);
        WatchHover(button, button);
        if (isToggle) {
            SetWindowSubclass(button, &ToggleProcedure, 2, 0);
        }
    }
    return button;
}

void RepaintButtonAfter(HWND button, UINT message) {
    if (message == BM_SETCHECK || message == BM_SETSTATE || message == WM_SETFOCUS ||
        message == WM_KILLFOCUS || message == WM_ENABLE) {
        InvalidateRect(button, nullptr, FALSE);
        UpdateWindow(button);
    }
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
    PaintRoundedBox(
        draw.hDC, draw.rcItem,
        {.ground = state.pressed   ? Theme().pressed
                   : state.hovered ? Theme().hover
                                   : Theme().headerGround,
         .border = state.focused || (state.hovered && Theme().isHighContrast) ? Theme().accent
                                                                              : Theme().controlBorder,
         .outside = outside,
         .thickness = scale(state.focused ? 2 : 1),
         .radius = scale(kCornerRadius)});
}
