#include "ui/dark_mode.h"

#include <dwmapi.h>
#include <uxtheme.h>

#include "ui/theme.h"

namespace {

// DWMWA_USE_IMMERSIVE_DARK_MODE, and its number before build 18985 of Windows 10. Each answers the other's
// with an error that changes nothing.
constexpr DWORD kDarkFrameAttributes[] = {20, 19};

}  // namespace

void UseDarkFrame(HWND window) {
    const BOOL dark = Theme().isHighContrast ? FALSE : TRUE;
    for (const DWORD attribute : kDarkFrameAttributes) {
        if (SUCCEEDED(DwmSetWindowAttribute(window, attribute, &dark, sizeof(dark)))) {
            return;
        }
    }
}

void UseDarkScrollBars(HWND control) {
    SetWindowTheme(control, Theme().isHighContrast ? nullptr : L"DarkMode_Explorer", nullptr);
}

void RemoveVisualStyle(HWND control) {
    // The empty text would mean the default style.
    SetWindowTheme(control, L" ", L" ");
}
