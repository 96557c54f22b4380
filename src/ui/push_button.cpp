#include "ui/push_button.h"

#include <commctrl.h>

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
