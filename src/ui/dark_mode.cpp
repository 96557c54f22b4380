#include "ui/dark_mode.h"

#include <dwmapi.h>
#include <uxtheme.h>

namespace {

// DWMWA_USE_IMMERSIVE_DARK_MODE; systems before Windows 10 2004 answer with an error that changes nothing.
constexpr DWORD kDarkFrameAttribute = 20;

}  // namespace

void UseDarkFrame(HWND window) {
    const BOOL dark = TRUE;
    DwmSetWindowAttribute(window, kDarkFrameAttribute, &dark, sizeof(dark));
}

void UseDarkScrollBars(HWND control) {
    SetWindowTheme(control, L"DarkMode_Explorer", nullptr);
}

void RemoveVisualStyle(HWND control) {
    // The empty text would mean the default style.
    SetWindowTheme(control, L" ", L" ");
}
