#include "ui/window_scale.h"

#include "ui/device_context.h"

TScale ScaleOfWindow(HWND window) {
    const UINT dpi = window != nullptr ? GetDpiForWindow(window) : GetDpiForSystem();
    return TScale(dpi != 0 ? dpi : kStandardDpi);
}

TFont MakeMessageFont(TScale scale, TFontWeight weight, int enlargement) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    if (!SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0, scale.Dpi())) {
        metrics.lfMessageFont = LOGFONTW{};
        metrics.lfMessageFont.lfHeight = -scale(12);
        metrics.lfMessageFont.lfCharSet = DEFAULT_CHARSET;
    }
    LOGFONTW font = metrics.lfMessageFont;
    font.lfHeight = MulDiv(font.lfHeight, enlargement, 100);
    font.lfQuality = CLEARTYPE_QUALITY;
    if (weight == TFontWeight::SemiBold) {
        font.lfWeight = FW_SEMIBOLD;
    }
    return TFont(CreateFontIndirectW(&font));
}

int TextHeight(HFONT font) {
    const TScreenContext screen;
    const TSelection selection(screen.Get(), font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(screen.Get(), &metrics);
    return metrics.tmHeight;
}

SIZE WindowSizeOfClient(SIZE client, DWORD style, DWORD extendedStyle, TScale scale) {
    RECT area{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&area, style, FALSE, extendedStyle, scale.Dpi());
    return {area.right - area.left, area.bottom - area.top};
}
