// A text field with its label, in the dark look.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "ui/dpi.h"
#include "ui/drawn_control.h"

// One line of text in a frame, a label to the right of it, and an ellipsis button if wanted.
class TTextField final : public TDrawnControl {
public:
    // Height of the field at a scale of 100 %.
    static constexpr int kHeight = 26;

    struct TProperties {
        std::wstring label = {};
        bool masked = false;
        std::wstring buttonName = {};  // what a screen reader calls the ellipsis button; no button when empty
        std::function<void()> changed = {};  // by the user
        std::function<void()> buttonPressed = {};
    };

    // `width`: of the frame, at 100 %; the label stands behind it.
    [[nodiscard]] bool CreateIn(HWND parent, TProperties properties, int width, TScale scale, HFONT font);
    void SetScale(TScale scale, HFONT font);

    // Puts the text of the field into `text`, which may be wiped afterwards.
    void ReadText(std::wstring& text) const { ReadWindowText(edit_, text); }
    std::wstring Text() const;
    // Does not count as a change by the user.
    void SetText(const std::wstring& text);

    HWND Edit() const { return edit_; }
    HWND Button() const { return button_; }

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    void Place();
    void Paint() override;
    void DrawButton(const DRAWITEMSTRUCT& draw) const;
    void Command(HWND control, UINT notification);

    TProperties properties_;
    int width_ = 0;
    TScale scale_;
    HFONT font_ = nullptr;
    HWND label_ = nullptr;
    HWND edit_ = nullptr;
    HWND button_ = nullptr;
    bool settingText_ = false;
};
