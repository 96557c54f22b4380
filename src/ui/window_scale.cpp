#include "ui/window_scale.h"

#include <algorithm>

#include "ui/device_context.h"

namespace {

constexpr int kNarrowLetters = 85;  // percent

RECT WorkArea(HMONITOR handle) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(handle, &monitor);
    return monitor.rcWork;
}

RECT FitInto(const RECT& work, const RECT& area) {
    const LONG width = std::min(area.right - area.left, work.right - work.left);
    const LONG height = std::min(area.bottom - area.top, work.bottom - work.top);
    const LONG left = std::clamp(area.left, work.left, work.right - width);
    const LONG top = std::clamp(area.top, work.top, work.bottom - height);
    return {left, top, left + width, top + height};
}

}  // namespace

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

TFont MakeNarrowFont(HFONT font) {
    const TScreenContext screen;
    const TSelection selection(screen.Get(), font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(screen.Get(), &metrics);
    LOGFONTW narrow{};
    GetObjectW(font, sizeof(narrow), &narrow);
    narrow.lfWidth = metrics.tmAveCharWidth * kNarrowLetters / 100;
    return TFont(CreateFontIndirectW(&narrow));
}

int TextHeight(HFONT font) {
    const TScreenContext screen;
    const TSelection selection(screen.Get(), font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(screen.Get(), &metrics);
    return metrics.tmHeight;
}

int TextWidth(HFONT font, const std::wstring& text) {
    const TScreenContext screen;
    const TSelection selection(screen.Get(), font);
    SIZE size{};
    GetTextExtentPoint32W(screen.Get(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

RECT CentredOn(HWND owner, SIZE size) {
    const HWND around = owner != nullptr && !IsIconic(owner) ? owner : nullptr;
    const RECT work = WorkArea(MonitorFromWindow(around, MONITOR_DEFAULTTOPRIMARY));
    RECT middle = work;
    if (around != nullptr) {
        GetWindowRect(around, &middle);
    }
    const LONG left = (middle.left + middle.right - size.cx) / 2;
    const LONG top = (middle.top + middle.bottom - size.cy) / 2;
    return FitInto(work, {left, top, left + size.cx, top + size.cy});
}

RECT FittedToMonitor(const RECT& area) {
    return FitInto(WorkArea(MonitorFromRect(&area, MONITOR_DEFAULTTONEAREST)), area);
}

SIZE WindowSizeOfClient(SIZE client, DWORD style, DWORD extendedStyle, TScale scale) {
    RECT area{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&area, style, FALSE, extendedStyle, scale.Dpi());
    return {area.right - area.left, area.bottom - area.top};
}
