// How the configuration window is made and laid out, and how its messages reach the handlers.
#include <algorithm>
#include <system_error>
#include <utility>

#include "config/config_window.h"
#include "texts/config_texts.h"
#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/system_theme.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kClientWidth = 717;
constexpr int kClientHeight = 435;
constexpr int kMinimumWidth = 560;
constexpr int kMinimumHeight = 330;
constexpr int kMargin = 8;
constexpr int kRowGap = 6;
constexpr int kBackupPathWidth = 369;
constexpr int kCredentialWidth = 273;

constexpr DWORD kStyle =
    WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MAXIMIZEBOX | WS_CLIPCHILDREN;
constexpr DWORD kExtendedStyle = WS_EX_TOPMOST | WS_EX_CONTROLPARENT;

}  // namespace

void TfmConfig::FormCreate(HWND owner) {
    TCreateOptions options;
    options.className = L"VardekoConfig";
    options.caption = ConfigTexts::Window;
    options.style = kStyle;
    options.extendedStyle = kExtendedStyle;
    options.parent = owner;
    options.left = options.top = options.width = options.height = 0;
    if (owner != nullptr) {
        options.icon = reinterpret_cast<HICON>(GetClassLongPtrW(owner, GCLP_HICON));
        options.smallIcon = reinterpret_cast<HICON>(GetClassLongPtrW(owner, GCLP_HICONSM));
    }
    if (!Create(options)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateWindowEx");
    }
    UseDarkFrame(Handle());
    CreateControls();
}

void TfmConfig::CreateControls() {
    scale_ = ScaleOfWindow(Handle());
    font_ = MakeMessageFont(scale_);
    const HFONT font = font_.Get();
    TTextField::TProperties backupPath{.label = ConfigTexts::BackupFolder,
                                       .buttonName = ConfigTexts::ChooseBackupFolder,
                                       .changed = [this] { settings_.NASDIR.known = true; },
                                       .buttonPressed = [this] { EdBackupPathPropertiesButtonClick(); }};
    TTextField::TProperties user{.label = ConfigTexts::User,
                                 .changed = [this] { settings_.USER.known = true; }};
    TTextField::TProperties password{
        .label = ConfigTexts::Password, .masked = true, .changed = [this] { settings_.PASS.known = true; }};
    // In the order of the Tab key.
    const bool created =
        dxBarManager1Bar1.CreateIn(Handle(), {{&acClose, true}, {}, {&acGetDirectory, true}}, scale_, font) &&
        EdBackupPath.CreateIn(Handle(), std::move(backupPath), kBackupPathWidth, scale_, font) &&
        cxCheckBox1.CreateIn(Handle(), ConfigTexts::OtherUser, scale_, font) &&
        cxTextEdit1.CreateIn(Handle(), std::move(user), kCredentialWidth, scale_, font) &&
        cxTextEdit2.CreateIn(Handle(), std::move(password), kCredentialWidth, scale_, font) &&
        cxGrid.CreateIn(Handle(), {ConfigTexts::Folders, ConfigTexts::NoFolders, ConfigTexts::DeleteFolder},
                        scale_, font);
    noticeLine_ = CreateChild(Handle(), L"STATIC", L"", SS_NOPREFIX);
    if (!created || noticeLine_ == nullptr) {
        const DWORD error = GetLastError();
        Destroy();
        throw std::system_error(static_cast<int>(error), std::system_category(), "CreateWindowEx");
    }
}

void TfmConfig::UseScale(TScale scale) {
    scale_ = scale;
    TFont font = MakeMessageFont(scale);
    dxBarManager1Bar1.SetScale(scale, font.Get());
    EdBackupPath.SetScale(scale, font.Get());
    cxCheckBox1.SetScale(scale, font.Get());
    SendMessageW(cxCheckBox1.Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
    cxTextEdit1.SetScale(scale, font.Get());
    cxTextEdit2.SetScale(scale, font.Get());
    cxGrid.SetScale(scale, font.Get());
    SendMessageW(noticeLine_, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
    font_ = std::move(font);
    Layout();
}

void TfmConfig::Layout() {
    RECT client{};
    GetClientRect(Handle(), &client);
    const int left = scale_(kMargin);
    const int gap = scale_(kRowGap);
    const int width = std::max<int>(0, client.right - 2 * left);
    int top = scale_(TToolBar::kHeight);
    PlaceWindow(dxBarManager1Bar1.Handle(), {0, 0, client.right, top});
    top += gap;
    const auto placeRow = [&](HWND control, int w, int h) {
        PlaceWindow(control, {left, top, left + w, top + h});
        top += h + gap;
    };
    const SIZE box = cxCheckBox1.PreferredSize();
    placeRow(EdBackupPath.Handle(), width, scale_(TTextField::kHeight));
    placeRow(cxCheckBox1.Handle(), box.cx, box.cy);
    placeRow(cxTextEdit1.Handle(), width, scale_(TTextField::kHeight));
    placeRow(cxTextEdit2.Handle(), width, scale_(TTextField::kHeight));
    top += scale_(kMargin) - gap;
    // Below the grid, so that what comes and goes there does not move the rows under the pointer.
    LONG bottom = client.bottom - left;
    if (std::wstring notice; ReadWindowText(noticeLine_, notice), !notice.empty()) {
        RECT area{0, 0, width, 0};
        const TScreenContext screen;
        const TSelection selection(screen.Get(), font_.Get());
        DrawTextW(screen.Get(), notice.c_str(), -1, &area, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
        PlaceWindow(noticeLine_, {left, bottom - area.bottom, left + width, bottom});
        bottom -= area.bottom + gap;
    }
    PlaceWindow(cxGrid.Handle(), {left, top, left + width, std::max<LONG>(top, bottom)});
}

void TfmConfig::ShowNotice(std::wstring notice) {
    if (notice == notice_) {
        return;
    }
    notice_ = std::move(notice);
    UpdateNoticeLine();
}

void TfmConfig::UpdateNoticeLine() {
    if (!cxGrid.Exists()) {
        return;
    }
    const std::wstring text = notice_ + (notice_.empty() || warnings_.empty() ? L"" : L"\n") + warnings_;
    std::wstring shown;
    ReadWindowText(noticeLine_, shown);
    if (text == shown) {
        return;
    }
    SetWindowTextW(noticeLine_, text.c_str());
    ShowWindow(noticeLine_, text.empty() ? SW_HIDE : SW_SHOWNA);
    Layout();
    if (!text.empty()) {
        NotifyWinEvent(EVENT_SYSTEM_ALERT, noticeLine_, OBJID_CLIENT, CHILDID_SELF);
    }
}

SIZE TfmConfig::ClientSize(int width, int height) const {
    return WindowSizeOfClient({scale_(width), scale_(height)}, kStyle, kExtendedStyle, scale_);
}

// Where the user left it; in the middle of the owner as long as he has not.
void TfmConfig::PlaceOn(HWND owner, const std::optional<TWindowPlace>& place) {
    // On the monitor first: only there the window has that monitor's scale.
    const RECT start = place ? FittedToMonitor(place->area) : CentredOn(owner, {});
    SetWindowPos(Handle(), nullptr, start.left, start.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    UseScale(ScaleOfWindow(Handle()));
    const RECT area =
        place ? place->AreaAt(scale_) : CentredOn(owner, ClientSize(kClientWidth, kClientHeight));
    SetWindowPos(Handle(), HWND_TOPMOST, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOACTIVATE);
}

void TfmConfig::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().windowGround);
}

// The system gives the focus to the window itself when it comes back, not to the control that had it.
void TfmConfig::Activated(bool active) {
    refused_ = false;
    if (!active) {
        lastFocus_ = GetFocus();
        return;
    }
    HWND target = lastFocus_;
    if (target == nullptr || !IsChild(Handle(), target)) {
        target = EdBackupPath.Edit();
    } else if (!IsWindowVisible(target)) {
        target = cxGrid.Handle();  // the editor of a cell, closed since
    }
    SetFocus(target);
}

// What the Enter key does; check boxes and fields leave it alone.
void TfmConfig::PressFocusedButton() {
    const HWND focus = GetFocus();
    if ((GetWindowLongPtrW(focus, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW) {
        SendMessageW(focus, BM_CLICK, 0, 0);
    }
}

void TfmConfig::ScaleChanged(TScale scale, const RECT& suggestedArea) {
    UseScale(scale);
    PlaceWindow(Handle(), suggestedArea);
}

std::optional<LRESULT> TfmConfig::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    if (BringsNewColours(message, wordParameter)) {
        UseDarkFrame(Handle());
        UseScale(scale_);
        RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        return 0;
    }
    switch (message) {
        case WM_CLOSE:
            acCloseExecute();
            return 0;
        case WM_DESTROY:
            CloseWithoutQuestion();
            return 0;
        case WM_ENDSESSION:
            if (wordParameter != FALSE) {
                CloseWithoutQuestion();
            }
            return 0;
        case WM_SIZE:
            if (cxGrid.Exists()) {
                Layout();
            }
            return 0;
        case WM_GETMINMAXINFO: {
            // Never more than the monitor has room for.
            const SIZE size = ClientSize(kMinimumWidth, kMinimumHeight);
            const RECT area = FittedToMonitor(CentredOn(Handle(), size));
            reinterpret_cast<MINMAXINFO*>(longParameter)->ptMinTrackSize = {area.right - area.left,
                                                                            area.bottom - area.top};
            return 0;
        }
        case WM_DPICHANGED:
            ScaleChanged(TScale(LOWORD(wordParameter)), *reinterpret_cast<const RECT*>(longParameter));
            return 0;
        case WM_ACTIVATE:
            if (open_) {
                Activated(LOWORD(wordParameter) != WA_INACTIVE);
            }
            return 0;
        case WM_COMMAND:
            if (reinterpret_cast<HWND>(longParameter) == cxCheckBox1.Handle() &&
                HIWORD(wordParameter) == BN_CLICKED) {
                settings_.CONNECT.known = true;
            } else if (LOWORD(wordParameter) == IDOK && longParameter == 0) {
                PressFocusedButton();
            } else if (LOWORD(wordParameter) == IDCANCEL && longParameter == 0) {  // the Escape key
                acClose.Execute();
            }
            return 0;
        case WM_CTLCOLORSTATIC:
            return ControlColours(wordParameter, Theme().infoRow.text, Theme().windowGround);
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        default:
            return std::nullopt;
    }
}
