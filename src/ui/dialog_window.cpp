#include "ui/dialog_window.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/push_button.h"
#include "ui/system_theme.h"
#include "ui/window_scale.h"

namespace {

constexpr DWORD kStyle = WS_POPUP | WS_CLIPCHILDREN;
constexpr std::chrono::milliseconds kFadeStep{8};
constexpr int kOpaque = 255;

bool IsTextField(HWND control) {
    wchar_t className[8]{};
    GetClassNameW(control, className, 8);
    return lstrcmpiW(className, L"EDIT") == 0;
}

}  // namespace

TDialogWindow::TDialogWindow() : fadeTimer_(static_cast<UINT>(kFadeStep.count()), [this] { FadeStep(); }) {}

TDialogWindow::~TDialogWindow() {
    CloseNow();
}

bool TDialogWindow::Open(HWND owner, const std::wstring& caption, SIZE size) {
    scale_ = ScaleOfWindow(owner);
    font_ = MakeMessageFont(scale_);
    const SIZE scaled{scale_(size.cx), scale_(size.cy)};
    const RECT place = CentredOn(owner, scaled);
    TCreateOptions options;
    options.className = L"VardekoDialog";
    options.caption = caption;
    options.style = kStyle;
    options.extendedStyle = WS_EX_CONTROLPARENT;
    options.classStyle = CS_DROPSHADOW;
    options.left = place.left;
    options.top = place.top;
    options.width = scaled.cx;
    options.height = scaled.cy;
    options.parent = owner;
    if (!Create(options)) {
        return false;
    }
    AddControls();
    SetFontOfControls();
    Arrange();
    focusBefore_ = GetFocus();
    DisableOtherWindows();
    // A tool tip, too, is always on top, but goes away by itself.
    const auto isTopmost = [](HWND window) {
        return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0 &&
               (GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
    };
    if (std::ranges::any_of(disabled_, isTopmost)) {
        // Behind a disabled window that is always on top nobody would find it.
        SetWindowPos(Handle(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    }
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
    SetFocus(GetNextDlgTabItem(Handle(), nullptr, FALSE));
    return true;
}

void TDialogWindow::CloseNow() {
    fadeTimer_.SetEnabled(false);
    fadeEnded_ = nullptr;
    // First, so that the system activates one of them when this window goes.
    EnableOtherWindows();
    Destroy();
}

HWND TDialogWindow::AddControl(const wchar_t* className, const std::wstring& text, DWORD style) {
    return Adopt(CreateChild(Handle(), className, text, WS_VISIBLE | style));
}

HWND TDialogWindow::AddButton(int id, const std::wstring& text) {
    return Adopt(CreatePushButton(Handle(), id, text));
}

HWND TDialogWindow::Adopt(HWND control) {
    SetWindowSubclass(control, &TDialogWindow::KeyProcedure, 2, reinterpret_cast<DWORD_PTR>(this));
    return controls_.emplace_back(control);
}

void TDialogWindow::SetFontOfControls() {
    for (const HWND control : controls_) {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_.Get()), TRUE);
    }
}

void TDialogWindow::ScaleChanged(UINT dpi, const RECT& area) {
    scale_ = TScale(dpi);
    TFont font = MakeMessageFont(scale_);
    std::swap(font, font_);  // the old one is released when no control uses it any more
    PlaceWindow(Handle(), area);
    SetFontOfControls();
    Arrange();
    InvalidateRect(Handle(), nullptr, TRUE);
}

void TDialogWindow::DisableOtherWindows() {
    const auto disable = [](HWND window, LPARAM self) -> BOOL {
        auto* dialog = reinterpret_cast<TDialogWindow*>(self);
        if (window != dialog->Handle() && IsWindowVisible(window) && IsWindowEnabled(window)) {
            dialog->disabled_.push_back(window);
            EnableWindow(window, FALSE);
        }
        return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), disable, reinterpret_cast<LPARAM>(this));
}

void TDialogWindow::EnableOtherWindows() {
    for (const HWND window : std::exchange(disabled_, {})) {
        EnableWindow(window, TRUE);  // a window that is gone meanwhile only makes this fail
    }
    if (const HWND focus = std::exchange(focusBefore_, nullptr);
        IsWindow(focus) && Handle() == GetActiveWindow()) {
        SetFocus(focus);
    }
}

// Where the keys arrive, and not in our message loop: that of a menu or of a box of the system knows nothing
// of them.
LRESULT CALLBACK TDialogWindow::KeyProcedure(HWND control, UINT message, WPARAM wordParameter,
                                             LPARAM longParameter, UINT_PTR id, DWORD_PTR data) {
    auto* dialog = reinterpret_cast<TDialogWindow*>(data);
    if (message == WM_KEYDOWN && dialog->HandleKey(wordParameter)) {
        return 0;
    }
    if (message == WM_CHAR &&
        (wordParameter == VK_TAB || wordParameter == VK_RETURN || wordParameter == VK_ESCAPE)) {
        return 0;  // what follows those keys
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(control, &TDialogWindow::KeyProcedure, id);
    }
    return DefSubclassProc(control, message, wordParameter, longParameter);
}

bool TDialogWindow::HandleKey(WPARAM virtualKey) {
    if (GetActiveWindow() != Handle() || !IsWindowEnabled(Handle())) {
        return false;
    }
    const HWND focus = GetFocus();
    switch (virtualKey) {
        case VK_TAB:
            SetFocus(GetNextDlgTabItem(Handle(), focus, GetKeyState(VK_SHIFT) < 0));
            return true;
        case VK_RETURN:
            if (const int id = GetDlgCtrlID(focus); id != 0) {
                SendMessageW(focus, BM_CLICK, 0, 0);
            }
            return true;
        case VK_ESCAPE:
            RunGuarded([this] { CancelWanted(); });
            return true;
        default:
            return false;
    }
}

std::optional<LRESULT> TDialogWindow::HandleMessage(UINT message, WPARAM wordParameter,
                                                    LPARAM longParameter) {
    if (BringsNewColours(message, wordParameter)) {
        RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        return 0;
    }
    switch (message) {
        case WM_PAINT: {
            const TPaintContext paint(Handle());
            FillArea(paint.Get(), paint.Client(), Theme().windowGround);
            FrameArea(paint.Get(), paint.Client(), Theme().border, scale_(1));
            const TSelection font(paint.Get(), font_.Get());
            Paint(paint.Get(), paint.Client());
            return 0;
        }
        case WM_ERASEBKGND:
            return 1;
        case WM_KEYDOWN:
            return HandleKey(wordParameter) ? std::optional<LRESULT>(0) : std::nullopt;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORBTN:
            return ControlColours(wordParameter, Theme().text,
                                  IsTextField(reinterpret_cast<HWND>(longParameter)) ? Theme().controlGround
                                                                                     : Theme().windowGround);
        case WM_DRAWITEM:
            DrawButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(longParameter));
            return TRUE;
        case WM_COMMAND:
            if (longParameter != 0 && HIWORD(wordParameter) == BN_CLICKED && !fadeTimer_.Enabled()) {
                ButtonClicked(LOWORD(wordParameter));
            }
            return 0;
        case WM_CLOSE:
            CancelWanted();
            return 0;
        case WM_NCHITTEST: {
            // Without a caption the window is moved by its ground.
            const LRESULT hit = DefaultProcessing(message, wordParameter, longParameter);
            return hit == HTCLIENT ? HTCAPTION : hit;
        }
        case WM_DPICHANGED:
            ScaleChanged(LOWORD(wordParameter), *reinterpret_cast<const RECT*>(longParameter));
            return 0;
        case WM_DESTROY:
            controls_.clear();
            return 0;
        default:
            return std::nullopt;
    }
}

void TDialogWindow::DrawButton(const DRAWITEMSTRUCT& draw) const {
    DrawButtonFace(draw, scale_);
    wchar_t text[64]{};
    GetWindowTextW(draw.hwndItem, text, 64);
    const TSelection font(draw.hDC, font_.Get());
    SetBkMode(draw.hDC, TRANSPARENT);
    SetTextColor(draw.hDC, ColorRefOf(StateOfButton(draw).enabled ? Theme().text : Theme().disabledText));
    RECT area = draw.rcItem;
    DrawTextW(draw.hDC, text, -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
}

void TDialogWindow::FadeOut(std::function<void()> closed) {
    if (fadeTimer_.Enabled()) {
        return;
    }
    fadeEnded_ = std::move(closed);
    fadeBegin_ = std::chrono::steady_clock::now();
    SetWindowLongPtrW(Handle(), GWL_EXSTYLE, GetWindowLongPtrW(Handle(), GWL_EXSTYLE) | WS_EX_LAYERED);
    SetLayeredWindowAttributes(Handle(), 0, kOpaque, LWA_ALPHA);
    fadeTimer_.SetEnabled(true);
}

void TDialogWindow::FadeStep() {
    // The system's timer ticks more slowly than the steps are, so the steps are counted by the clock.
    const auto steps = (std::chrono::steady_clock::now() - fadeBegin_) / kFadeStep;
    if (steps < kOpaque && Exists()) {
        SetLayeredWindowAttributes(Handle(), 0, static_cast<BYTE>(kOpaque - steps), LWA_ALPHA);
        return;
    }
    const auto ended = std::exchange(fadeEnded_, nullptr);
    CloseNow();
    if (ended) {
        ended();
    }
}
