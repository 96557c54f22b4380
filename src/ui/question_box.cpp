#include "ui/question_box.h"

#include <algorithm>
#include <utility>

#include "texts/ui_texts.h"
#include "ui/device_context.h"
#include "ui/message_loop.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kWidth = 380;
constexpr int kMargin = 16;
constexpr int kTitleHeight = 32;
constexpr int kButtonWidth = 96;
constexpr int kButtonHeight = 30;
constexpr int kGap = 8;
constexpr int kLargestTextHeight = 200;
constexpr int kFirstButton = 1;
constexpr UINT kTextFormat = DT_WORDBREAK | DT_NOPREFIX | DT_EDITCONTROL | DT_END_ELLIPSIS;

// Height at a scale of 100 %.
int HeightOfText(const std::wstring& text) {
    const TFont font = MakeMessageFont(TScale());
    const TScreenContext screen;
    const TSelection selection(screen.Get(), font.Get());
    RECT area{0, 0, kWidth - 2 * kMargin, 0};
    DrawTextW(screen.Get(), text.c_str(), -1, &area, kTextFormat | DT_CALCRECT);
    return std::min<int>(area.bottom, kLargestTextHeight);
}

}  // namespace

bool AskYesNo(HWND owner, const std::wstring& title, const std::wstring& text) {
    constexpr std::size_t kYes = 0;
    constexpr std::size_t kNo = 1;
    bool yes = false;
    TQuestionBox box;
    box.Ask(
        owner, title, text, {UiTexts::Yes, UiTexts::No}, [&yes](std::size_t button) { yes = button == kYes; },
        kNo);
    // It goes with its owner, too.
    RunMessageLoop([&box] { return !box.Exists(); }, [] {});
    return yes;
}

void TQuestionBox::Ask(HWND owner, const std::wstring& title, const std::wstring& text,
                       std::vector<std::wstring> buttons, TAnswered answered, std::size_t focusedButton) {
    CloseNow();
    title_ = title;
    text_ = text;
    captions_ = std::move(buttons);
    answered_ = std::move(answered);
    const int height = kTitleHeight + HeightOfText(text) + 2 * kMargin + kButtonHeight + kMargin;
    if (!Open(owner, title, {kWidth, height})) {
        CancelWanted();
    } else if (focusedButton < buttons_.size()) {
        SetFocus(buttons_[focusedButton]);
    }
}

void TQuestionBox::AddControls() {
    buttons_.clear();
    for (std::size_t index = 0; index < captions_.size(); ++index) {
        buttons_.push_back(AddButton(kFirstButton + static_cast<int>(index), captions_[index]));
    }
}

void TQuestionBox::Arrange() {
    RECT client{};
    GetClientRect(Handle(), &client);
    const TScale& scale = Scale();
    LONG right = client.right - scale(kMargin);
    const LONG bottom = client.bottom - scale(kMargin);
    for (auto button = buttons_.rbegin(); button != buttons_.rend(); ++button) {
        PlaceWindow(*button, {right - scale(kButtonWidth), bottom - scale(kButtonHeight), right, bottom});
        right -= scale(kButtonWidth) + scale(kGap);
    }
}

void TQuestionBox::Paint(HDC context, const RECT& client) {
    const TScale& scale = Scale();
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, ColorRefOf(Theme().dimText));
    RECT title{scale(kMargin), scale(kGap), client.right - scale(kMargin), scale(kTitleHeight)};
    DrawTextW(context, title_.c_str(), -1, &title,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SetTextColor(context, ColorRefOf(Theme().text));
    RECT text{scale(kMargin), scale(kTitleHeight) + scale(kGap), client.right - scale(kMargin),
              client.bottom - scale(kMargin) - scale(kButtonHeight) - scale(kGap)};
    DrawTextW(context, text_.c_str(), -1, &text, kTextFormat);
}

void TQuestionBox::ButtonClicked(int id) {
    const auto answered = std::exchange(answered_, nullptr);
    CloseNow();
    if (answered) {
        answered(static_cast<std::size_t>(id - kFirstButton));
    }
}

void TQuestionBox::CancelWanted() {
    ButtonClicked(kFirstButton + static_cast<int>(captions_.size()) - 1);
}
