#include "ui/text_field.h"

#include <algorithm>

#include "ui/device_context.h"
#include "ui/hover.h"
#include "ui/push_button.h"
#include "ui/rounded_box.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kPadding = 6;
constexpr int kButtonWidth = 26;
constexpr int kButtonInset = 3;  // from the frame
constexpr int kLabelGap = 8;
constexpr int kLabelWidth = 220;

}  // namespace

bool TTextField::CreateIn(HWND parent, TProperties properties, int width, TScale scale, HFONT font) {
    properties_ = std::move(properties);
    width_ = width;
    if (!CreateControl(parent, L"VardekoTextField", WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT)) {
        return false;
    }
    // Before the field: a screen reader takes the text before a field for its name.
    label_ = CreateChild(Handle(), L"STATIC", properties_.label, WS_VISIBLE | SS_NOPREFIX | SS_CENTERIMAGE);
    edit_ = CreateChild(Handle(), L"EDIT", L"",
                        WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL | (properties_.masked ? ES_PASSWORD : 0));
    WatchHover(edit_, Handle());
    if (!properties_.buttonName.empty()) {
        button_ = CreatePushButton(Handle(), 0, properties_.buttonName);
    }
    SetScale(scale, font);
    return label_ != nullptr && edit_ != nullptr;
}

void TTextField::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    for (const HWND control : {label_, edit_}) {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    SendMessageW(edit_, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    Place();
}

void TTextField::Place() {
    const int height = scale_(kHeight);
    const int width = scale_(width_);
    const int padding = scale_(kPadding);
    const int line = std::min(TextHeight(font_), height - 2);
    const int button = button_ != nullptr ? scale_(kButtonWidth) : 0;
    SetWindowPos(Handle(), nullptr, 0, 0, width + scale_(kLabelGap + kLabelWidth), height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    const int top = (height - line) / 2;
    PlaceWindow(edit_, {padding, top, width - padding - button, top + line});
    PlaceWindow(label_, {width + scale_(kLabelGap), 0, width + scale_(kLabelGap + kLabelWidth), height});
    if (button_ != nullptr) {
        const int inset = scale_(kButtonInset);
        PlaceWindow(button_, {width - button + inset, inset, width - inset, height - inset});
    }
    InvalidateRect(Handle(), nullptr, TRUE);
}

std::wstring TTextField::Text() const {
    std::wstring text;
    ReadText(text);
    return text;
}

void TTextField::SetText(const std::wstring& text) {
    settingText_ = true;
    SetWindowTextW(edit_, text.c_str());
    settingText_ = false;
    SendMessageW(edit_, EM_EMPTYUNDOBUFFER, 0, 0);
}

void TTextField::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().windowGround);
    const RECT frame{0, 0, scale_(width_), scale_(kHeight)};
    const bool focused = GetFocus() == edit_;
    const int radius = scale_(kCornerRadius);
    PaintRoundedBox(paint.Get(), frame,
                    {.ground = Theme().controlGround,
                     .border = focused            ? Theme().accent
                               : IsHovered(edit_) ? Theme().dimText
                                                  : Theme().controlBorder,
                     .outside = Theme().windowGround,
                     .thickness = scale_(1),
                     .radius = radius});
    // Where one writes: the lower edge stands out.
    const int edge = scale_(focused ? 2 : 1);
    FillArea(paint.Get(),
             {frame.left + radius / 2, frame.bottom - edge, frame.right - radius / 2, frame.bottom},
             focused ? Theme().accent : Theme().dimText);
}

void TTextField::DrawButton(const DRAWITEMSTRUCT& draw) const {
    DrawButtonFace(draw, scale_, Theme().controlGround);
    const int dot = std::max(1, scale_(2));
    const LONG left = (draw.rcItem.right - dot) / 2;
    const LONG top = (draw.rcItem.bottom - dot) / 2;
    for (const int offset : {-2 * dot, 0, 2 * dot}) {
        FillArea(draw.hDC, {left + offset, top, left + offset + dot, top + dot}, Theme().text);
    }
}

void TTextField::Command(HWND control, UINT notification) {
    if (control == button_ && notification == BN_CLICKED) {
        if (properties_.buttonPressed) {
            properties_.buttonPressed();
        }
    } else if (control == edit_ && notification == EN_CHANGE) {
        if (!settingText_ && properties_.changed) {
            properties_.changed();
        }
    } else if (control == edit_ && (notification == EN_SETFOCUS || notification == EN_KILLFOCUS)) {
        Repaint();
    }
}

std::optional<LRESULT> TTextField::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    switch (message) {
        case WM_CTLCOLOREDIT:
            return ControlColours(wordParameter, Theme().text, Theme().controlGround);
        case WM_CTLCOLORSTATIC:
            return ControlColours(wordParameter, Theme().dimText, Theme().windowGround);
        case WM_DRAWITEM:
            DrawButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(longParameter));
            return TRUE;
        case WM_COMMAND:
            Command(reinterpret_cast<HWND>(longParameter), HIWORD(wordParameter));
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(edit_);
            return 0;
        default:
            return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
    }
}
