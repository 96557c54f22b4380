#include "update/update_window.h"

#include <utility>

#include "texts/update_texts.h"
#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/window_scale.h"

namespace {

enum TButtonId : int { kSearch = 1, kDownload, kCancel };

// Sizes at a scale of 100 %.
constexpr SIZE kSize{500, 320};
constexpr int kMargin = 12;  // around the group box and inside of it
constexpr int kLabelHeight = 22;
constexpr int kButtonHeight = 30;
constexpr int kSearchWidth = 170;
constexpr int kButtonWidth = 110;
constexpr int kGap = 8;
constexpr int kLogPadding = 6;

RECT Shrunk(RECT area, int by) {
    InflateRect(&area, -by, -by);
    return area;
}

}  // namespace

TUpdateWindow::TUpdateWindow(TAction& acSearchForUpdates, TAction& acDownload, std::function<void()> cancel)
    : acSearchForUpdates_(acSearchForUpdates), acDownload_(acDownload), cancel_(std::move(cancel)) {
    acSearchForUpdates_.SetChangeHandler([this] { UpdateButtons(); });
    acDownload_.SetChangeHandler([this] { UpdateButtons(); });
}

bool TUpdateWindow::ShowOver(HWND owner) {
    if (!Open(owner, UpdateTexts::Window, kSize)) {
        return false;
    }
    if (acDownload_.Enabled()) {
        SetFocus(downloadButton_);  // what the user is most likely to want
    }
    return true;
}

void TUpdateWindow::SetLog(const std::wstring& text) {
    SetWindowTextW(connectLogBox_, text.c_str());
    FitLog();
    // The newest line is the last one.
    SendMessageW(connectLogBox_, EM_SETSEL, text.size(), static_cast<LPARAM>(text.size()));
    SendMessageW(connectLogBox_, EM_SCROLLCARET, 0, 0);
}

void TUpdateWindow::SetLabel(const std::wstring& text) {
    SetWindowTextW(cxLabel1_, text.c_str());
}

void TUpdateWindow::AddControls() {
    searchButton_ = AddButton(kSearch, acSearchForUpdates_.Caption());
    downloadButton_ = AddButton(kDownload, acDownload_.Caption());
    btnCancel_ = AddButton(kCancel, UpdateTexts::Cancel);
    connectLogBox_ =
        AddControl(L"EDIT", L"", WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL);
    UseDarkScrollBars(connectLogBox_);
    cxLabel1_ = AddControl(L"STATIC", L"", SS_LEFTNOWORDWRAP | SS_NOPREFIX | SS_CENTERIMAGE | SS_ENDELLIPSIS);
    UpdateButtons();
}

void TUpdateWindow::Arrange() {
    const TScale& scale = Scale();
    RECT client{};
    GetClientRect(Handle(), &client);
    const RECT inner = Shrunk(client, scale(2 * kMargin));
    const LONG buttonTop = inner.bottom - scale(kButtonHeight);
    const LONG labelTop = buttonTop - scale(kGap) - scale(kLabelHeight);
    PlaceWindow(searchButton_, {inner.left, buttonTop, inner.left + scale(kSearchWidth), inner.bottom});
    PlaceWindow(btnCancel_, {inner.right - scale(kButtonWidth), buttonTop, inner.right, inner.bottom});
    const LONG downloadRight = inner.right - scale(kButtonWidth) - scale(kGap);
    PlaceWindow(downloadButton_,
                {downloadRight - scale(kButtonWidth), buttonTop, downloadRight, inner.bottom});
    PlaceWindow(cxLabel1_, {inner.left, labelTop, inner.right, labelTop + scale(kLabelHeight)});
    // Inside of the frame that Paint draws around it.
    PlaceWindow(connectLogBox_, {inner.left + scale(1), inner.top + scale(kGap) + scale(1),
                                 inner.right - scale(1), labelTop - scale(kGap)});
    FitLog();
}

void TUpdateWindow::FitLog() {
    RECT area{};
    GetClientRect(connectLogBox_, &area);
    const auto lines = static_cast<int>(SendMessageW(connectLogBox_, EM_GETLINECOUNT, 0, 0));
    const bool isTooLong = lines * TextHeight(Font()) > area.bottom - 2 * Scale()(kLogPadding);
    // The system would show a scroll bar that cannot be used.
    ShowScrollBar(connectLogBox_, SB_VERT, isTooLong);
    GetClientRect(connectLogBox_, &area);
    area = Shrunk(area, Scale()(kLogPadding));
    SendMessageW(connectLogBox_, EM_SETRECT, 0, reinterpret_cast<LPARAM>(&area));
}

void TUpdateWindow::Paint(HDC context, const RECT& client) {
    const TScale& scale = Scale();
    RECT group = Shrunk(client, scale(kMargin));
    const int titleHeight = TextHeight(Font());
    group.top += titleHeight / 2 - scale(4);
    FrameArea(context, group, Theme().border, scale(1));
    RECT title{group.left + scale(kMargin), group.top - titleHeight / 2, 0, 0};
    DrawTextW(context, UpdateTexts::Status, -1, &title, DT_SINGLELINE | DT_CALCRECT);
    FillArea(context, {title.left - scale(4), title.top, title.right + scale(4), title.bottom},
             Theme().windowGround);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, ColorRefOf(Theme().dimText));
    DrawTextW(context, UpdateTexts::Status, -1, &title, DT_SINGLELINE);

    RECT log{};
    GetWindowRect(connectLogBox_, &log);
    MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&log), 2);
    FrameArea(context, Shrunk(log, -scale(1)), Theme().border, scale(1));
}

void TUpdateWindow::UpdateButtons() {
    if (!Exists()) {
        return;
    }
    const bool hadFocus = IsChild(Handle(), GetFocus());
    EnableWindow(searchButton_, acSearchForUpdates_.Enabled());
    EnableWindow(downloadButton_, acDownload_.Enabled());
    // The keyboard must not stay on a button that can no longer be used.
    if (const HWND focus = GetFocus(); hadFocus && (focus == nullptr || !IsWindowEnabled(focus))) {
        SetFocus(acDownload_.Enabled() ? downloadButton_ : btnCancel_);
    }
}

void TUpdateWindow::ButtonClicked(int id) {
    switch (id) {
        case kSearch:
            acSearchForUpdates_.Execute();
            break;
        case kDownload:
            acDownload_.Execute();
            break;
        case kCancel:
            cancel_();
            break;
        default:
            break;
    }
}

void TUpdateWindow::CancelWanted() {
    cancel_();
}
