#include "ui/system_theme.h"

#include "ui/theme.h"

namespace {

bool IsHighContrastOn() {
    HIGHCONTRASTW setting{};
    setting.cbSize = sizeof(setting);
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(setting), &setting, 0) &&
           (setting.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

TColour SystemColour(int index) {
    const COLORREF colour = GetSysColor(index);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour)};
}

}  // namespace

void UseSystemTheme() {
    UseTheme(IsHighContrastOn() ? HighContrastTheme({.window = SystemColour(COLOR_WINDOW),
                                                     .windowText = SystemColour(COLOR_WINDOWTEXT),
                                                     .selection = SystemColour(COLOR_HIGHLIGHT),
                                                     .selectionText = SystemColour(COLOR_HIGHLIGHTTEXT),
                                                     .disabledText = SystemColour(COLOR_GRAYTEXT)})
                                : TTheme());
}

bool BringsNewColours(UINT message, WPARAM wordParameter) {
    if (message != WM_SYSCOLORCHANGE &&
        !(message == WM_SETTINGCHANGE && wordParameter == SPI_SETHIGHCONTRAST)) {
        return false;
    }
    UseSystemTheme();
    return true;
}
