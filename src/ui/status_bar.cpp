#include "ui/status_bar.h"

#include <algorithm>

#include "ui/device_context.h"
#include "ui/shorten_path.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kTextMargin = 5;
constexpr int kEdgeMargin = 4;

}  // namespace

bool TStatusBar::CreateIn(HWND parent, std::vector<TPanel> panels, TScale scale, HFONT font) {
    panels_ = std::move(panels);
    scale_ = scale;
    font_ = font;
    return CreateControl(parent, L"VardekoStatusBar");
}

void TStatusBar::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    Repaint();
}

void TStatusBar::SetText(std::size_t panel, const std::wstring& text) {
    std::wstring& shown = panels_.at(panel).text;
    if (shown != text) {
        shown = text;
        changed_ = true;
    }
}

void TStatusBar::ShowChanges() {
    if (!changed_ || !Exists()) {
        return;
    }
    changed_ = false;
    // The window's own text is what screen readers find; it is not drawn.
    std::wstring all;
    for (const TPanel& panel : panels_) {
        all += (all.empty() || panel.text.empty() ? L"" : L" ") + panel.text;
    }
    SetWindowTextW(Handle(), all.c_str());
    Repaint();
}

RECT TStatusBar::PanelArea(std::size_t panel) const {
    RECT client{};
    GetClientRect(Handle(), &client);
    int fixed = 0;
    for (const TPanel& other : panels_) {
        fixed += other.grows ? 0 : scale_(other.width);
    }
    const int growing = std::max<int>(0, static_cast<int>(client.right) - 2 * scale_(kEdgeMargin) - fixed);
    int left = scale_(kEdgeMargin);
    for (std::size_t index = 0; index < panel; ++index) {
        left += panels_[index].grows ? growing : scale_(panels_[index].width);
    }
    const int width = panels_.at(panel).grows ? growing : scale_(panels_.at(panel).width);
    return {left, client.top + scale_(1), left + width, client.bottom};
}

void TStatusBar::DrawPanel(HDC context, std::size_t panel) const {
    RECT area = PanelArea(panel);
    if (panel > 0) {
        FillArea(context, {area.left, area.top + scale_(5), area.left + scale_(1), area.bottom - scale_(5)},
                 Theme().border);
    }
    area.left += scale_(kTextMargin);
    const std::wstring& text = panels_[panel].text;
    const auto fits = [&](std::wstring_view candidate) {
        SIZE size{};
        GetTextExtentPoint32W(context, candidate.data(), static_cast<int>(candidate.size()), &size);
        return size.cx <= area.right - area.left;
    };
    const std::wstring shown = panels_[panel].holdsPath ? ShortenPath(text, fits) : text;
    SetTextColor(context, ColorRefOf(panel < 2 ? Theme().dimText : Theme().text));
    DrawTextW(context, shown.c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

void TStatusBar::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().windowGround);
    RECT line = paint.Client();
    line.bottom = line.top + scale_(1);
    FillArea(paint.Get(), line, Theme().border);
    const TSelection selection(paint.Get(), font_);
    SetBkMode(paint.Get(), TRANSPARENT);
    for (std::size_t panel = 0; panel < panels_.size(); ++panel) {
        DrawPanel(paint.Get(), panel);
    }
}

std::optional<LRESULT> TStatusBar::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    if (message == WM_SIZE) {
        Repaint();
        return 0;
    }
    return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
}
