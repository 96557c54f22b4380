#include "ui/drawn_control.h"

bool TDrawnControl::CreateControl(HWND parent, const wchar_t* className, DWORD style, DWORD extendedStyle,
                                  UINT classStyle) {
    TCreateOptions options;
    options.className = className;
    options.style = WS_CHILD | style;
    options.extendedStyle = extendedStyle;
    options.classStyle = classStyle;
    options.parent = parent;
    options.left = options.top = options.width = options.height = 0;
    return Create(options);
}

std::optional<LRESULT> TDrawnControl::HandleMessage(UINT message, WPARAM, LPARAM) {
    switch (message) {
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        default:
            return std::nullopt;
    }
}
