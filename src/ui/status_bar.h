// The line at the bottom of a window.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "ui/dpi.h"
#include "ui/drawn_control.h"

// A row of panels with texts; one of them takes the room that the others leave.
class TStatusBar final : public TDrawnControl {
public:
    struct TPanel {
        int width = 0;  // at a scale of 100 %
        bool grows = false;
        bool holdsPath = false;  // a text too long for the panel is shortened in its middle
        std::wstring text = {};
    };

    // Height at a scale of 100 %.
    static constexpr int kHeight = 26;

    [[nodiscard]] bool CreateIn(HWND parent, std::vector<TPanel> panels, TScale scale, HFONT font);
    void SetScale(TScale scale, HFONT font);

    const std::wstring& Text(std::size_t panel) const { return panels_.at(panel).text; }
    void SetText(std::size_t panel, const std::wstring& text);
    // Brings what was set since the last call to the screen.
    void ShowChanges();

    // The area of a panel in client coordinates, its separator left out.
    RECT PanelArea(std::size_t panel) const;

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    void Paint() override;
    void DrawPanel(HDC context, std::size_t panel) const;

    std::vector<TPanel> panels_;
    TScale scale_;
    HFONT font_ = nullptr;
    bool changed_ = false;
};
