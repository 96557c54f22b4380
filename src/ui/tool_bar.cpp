#include "ui/tool_bar.h"

#include "ui/device_context.h"
#include "ui/push_button.h"
#include "ui/rounded_box.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kMargin = 4;
constexpr int kButtonWidth = 40;
constexpr int kImageMargin = 8;
constexpr int kSeparatorWidth = 13;

std::wstring HintWithShortcut(const TAction& action) {
    const std::wstring& key = action.Shortcut().name;
    return key.empty() ? action.Hint() : action.Hint() + L" (" + key + L")";
}

}  // namespace

bool TToolBar::CreateIn(HWND parent, const std::vector<TToolBarItem>& items, TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    images_.SetScale(scale);
    if (!CreateControl(parent, L"VardekoToolBar", WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT)) {
        return false;
    }
    buttons_.clear();
    for (const TToolBarItem& item : items) {
        if (item.action == nullptr || item.action->Visible()) {
            buttons_.push_back({item, nullptr});
        }
    }
    int id = 1;
    for (TButton& button : buttons_) {
        if (button.item.action != nullptr) {
            CreateButton(button, id++);
        }
    }
    PlaceButtons();
    return true;
}

void TToolBar::CreateButton(TButton& button, int id) {
    TAction& action = *button.item.action;
    const std::wstring& name = button.item.showCaption ? action.Caption() : action.Hint();
    const DWORD group = id == 1 ? WS_GROUP : 0;
    button.handle = CreatePushButton(Handle(), id, name, group,
                                     action.Checkable() ? TButtonKind::Toggle : TButtonKind::Push);
    LeaveFocusOnClick(button.handle);
    toolTips_.SetHint(Handle(), button.handle, HintWithShortcut(action));
    EnableWindow(button.handle, action.Enabled());
    action.SetChangeHandler([this, &button] { ActionChanged(button); });
}

void TToolBar::SetScale(TScale scale, HFONT font) {
    scale_ = scale;
    font_ = font;
    images_.SetScale(scale);
    PlaceButtons();
    InvalidateRect(Handle(), nullptr, TRUE);
}

int TToolBar::ButtonWidth(const TToolBarItem& item) const {
    if (item.action == nullptr) {
        return scale_(kSeparatorWidth);
    }
    if (!item.showCaption) {
        return scale_(kButtonWidth);
    }
    return 2 * scale_(kImageMargin) + images_.Size() + TextWidth(font_, item.action->Caption()) +
           scale_(kImageMargin + 2);
}

void TToolBar::PlaceButtons() {
    unsigned number = 0;
    int left = scale_(kMargin);
    for (const TButton& button : buttons_) {
        const int width = ButtonWidth(button.item);
        if (button.handle != nullptr) {
            const RECT area{left, scale_(kMargin), left + width,
                            scale_(kMargin) + scale_(kHeight - 2 * kMargin)};
            PlaceWindow(button.handle, area);
            toolTips_.SetAreaHint(Handle(), ++number, area, HintWithShortcut(*button.item.action));
        }
        left += width;
    }
}

void TToolBar::ActionChanged(const TButton& button) {
    const bool enabled = button.item.action->Enabled();
    if ((IsWindowEnabled(button.handle) != FALSE) != enabled) {
        // A disabled control would keep the keyboard to itself.
        if (!enabled && GetFocus() == button.handle) {
            GiveFocusAway(button);
        }
        EnableWindow(button.handle, enabled);
    }
    if (const WPARAM check = button.item.action->Checked() ? BST_CHECKED : BST_UNCHECKED;
        button.item.action->Checkable() &&
        SendMessageW(button.handle, BM_GETCHECK, 0, 0) != static_cast<LRESULT>(check)) {
        SendMessageW(button.handle, BM_SETCHECK, check, 0);
    }
    InvalidateRect(button.handle, nullptr, FALSE);
}

void TToolBar::GiveFocusAway(const TButton& button) {
    HWND next = focusFallback_;
    if (TAction* replacement = button.item.replacement) {
        replacement->Update();
        if (replacement->Enabled()) {
            next = ButtonOf(*replacement);
        }
    }
    SetFocus(next != nullptr ? next : GetAncestor(Handle(), GA_ROOT));
}

HWND TToolBar::ButtonOf(const TAction& action) const {
    for (const TButton& button : buttons_) {
        if (button.item.action == &action) {
            return button.handle;
        }
    }
    return nullptr;
}

const TToolBar::TButton* TToolBar::FindButton(HWND handle) const {
    for (const TButton& button : buttons_) {
        if (button.handle != nullptr && button.handle == handle) {
            return &button;
        }
    }
    return nullptr;
}

void TToolBar::DrawButton(const DRAWITEMSTRUCT& draw) {
    const TButton* button = FindButton(draw.hwndItem);
    if (button == nullptr) {
        return;
    }
    const TAction& action = *button->item.action;
    const TButtonState state = StateOfButton(draw);
    const TColour ground = state.pressed      ? Theme().pressed
                           : action.Checked() ? Theme().checked
                           : state.hovered    ? Theme().hover
                                              : Theme().windowGround;
    const bool ring = state.focused && ShowsFocus(draw.hwndItem);
    const TColour border = ring || (state.hovered && (action.Checked() || Theme().isHighContrast))
                               ? Theme().accent
                           : action.Checked() ? Theme().controlBorder
                                              : ground;
    PaintRoundedBox(draw.hDC, draw.rcItem,
                    {.ground = ground,
                     .border = border,
                     .outside = Theme().windowGround,
                     .thickness = scale_(ring ? 2 : 1),
                     .radius = scale_(kCornerRadius)});
    const int height = draw.rcItem.bottom - draw.rcItem.top;
    images_.Draw(draw.hDC, {scale_(kImageMargin), (height - images_.Size()) / 2}, action.Image(),
                 state.enabled ? TImageState::Normal : TImageState::Disabled);
    if (button->item.showCaption) {
        RECT area = draw.rcItem;
        area.left += scale_(2 * kImageMargin) + images_.Size();
        const TSelection selection(draw.hDC, font_);
        SetBkMode(draw.hDC, TRANSPARENT);
        SetTextColor(draw.hDC, ColorRefOf(state.enabled ? Theme().text : Theme().disabledText));
        DrawTextW(draw.hDC, action.Caption().c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
}

void TToolBar::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().windowGround);
    int left = scale_(kMargin);
    for (const TButton& button : buttons_) {
        const int width = ButtonWidth(button.item);
        if (button.handle == nullptr) {
            const int middle = left + width / 2;
            FillArea(paint.Get(), {middle, scale_(10), middle + scale_(1), scale_(kHeight - 10)},
                     Theme().border);
        }
        left += width;
    }
}

std::optional<LRESULT> TToolBar::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    switch (message) {
        case WM_COMMAND:
            if (const TButton* button = FindButton(reinterpret_cast<HWND>(longParameter));
                button != nullptr && HIWORD(wordParameter) == BN_CLICKED) {
                button->item.action->Execute();
            }
            return 0;
        case WM_DRAWITEM:
            DrawButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(longParameter));
            return TRUE;
        default:
            return TDrawnControl::HandleMessage(message, wordParameter, longParameter);
    }
}
