// The main window's controls: how they are made, placed and coloured, and where its messages go.
#include "app/main_window.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <system_error>

#include "app/list_menu.h"
#include "app/resource.h"
#include "support/version.h"
#include "texts/main_texts.h"
#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/layout_store.h"
#include "ui/rounded_box.h"
#include "ui/system_theme.h"
#include "ui/window_place.h"
#include "ui/window_scale.h"

namespace {

// Sizes at a scale of 100 %.
constexpr int kWindowWidth = 900;
constexpr int kWindowHeight = 560;
constexpr int kLeastWidth = 560;
constexpr int kLeastHeight = 260;
constexpr int kFileBarHeight = 36;
constexpr int kFileFieldWidth = 410;
constexpr int kFileFieldHeight = 24;
constexpr int kMargin = 8;

constexpr int kListId = 100;
constexpr wchar_t kPlaceName[] = L"MainWindow";
constexpr LPARAM kKeyWasDown = LPARAM{1} << 30;

constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
// A tool window has no button in the taskbar of its own accord.
constexpr DWORD kExtendedStyle = WS_EX_TOOLWINDOW | WS_EX_APPWINDOW | WS_EX_CONTROLPARENT;

HICON LoadProgramIcon(int width) {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_VARDEKO), IMAGE_ICON,
                                         width, width, LR_SHARED));
}

}  // namespace

void TfmMain::FormCreate() {
    scale_ = ScaleOfWindow(nullptr);
    TCreateOptions options;
    options.className = L"TfmMain";
    options.caption = MainTexts::Window;
    options.style = kStyle;
    options.extendedStyle = kExtendedStyle;
    const std::optional<std::wstring> stored = LoadLayout(kPlaceName);
    const std::optional<TWindowPlace> place = stored ? RestorePlace(*stored) : std::nullopt;
    const RECT start = place ? FittedToMonitor(place->area)
                             : CentredOn(nullptr, {scale_(kWindowWidth), scale_(kWindowHeight)});
    options.left = start.left;
    options.top = start.top;
    options.width = start.right - start.left;
    options.height = start.bottom - start.top;
    options.icon = LoadProgramIcon(GetSystemMetrics(SM_CXICON));
    options.smallIcon = LoadProgramIcon(GetSystemMetrics(SM_CXSMICON));
    if (!Create(options)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateWindowEx");
    }
    UseDarkFrame(Handle());
    TTaskbarProgress::LetButtonMessagePass(Handle());
    scale_ = ScaleOfWindow(Handle());
    font_ = MakeMessageFont(scale_);
    CreateControls();
    UseScale(scale_);
    if (place) {
        PlaceWindow(Handle(), place->AreaAt(scale_));
        maximized_ = place->isMaximized;
    }
    // Focus marks appear once the keyboard is used.
    SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_INITIALIZE, 0), 0);
    UpdateActions();
    UpdateTimer.SetEnabled(true);
}

void TfmMain::CreateControls() {
    const HFONT font = font_.Get();
    bool created = toolBar_.CreateIn(Handle(),
                                     {{&acClose},
                                      {},
                                      {&acStartCopy, false, &acStopCopy},
                                      {&acStopCopy, false, &acStartCopy},
                                      {},
                                      {&acConfigCopy},
                                      {&acReindex, true},
                                      {&acUpdate, true},
                                      {},
                                      {&acShutDown, true}},
                                     scale_, font);
    fileLabel_ = CreateChild(Handle(), L"STATIC", MainTexts::CurrentFile, WS_VISIBLE | SS_LEFT | SS_NOPREFIX);
    dxBarStatic2_ = CreateChild(Handle(), L"EDIT", L"",
                                WS_VISIBLE | ES_READONLY | ES_AUTOHSCROLL | WS_TABSTOP | WS_GROUP);
    created = cxGridTv.CreateIn(Handle(), kListId, scale_, font) && created;
    created = sbarMain.CreateIn(Handle(),
                                {{.width = 50, .text = MainTexts::Version},
                                 {.width = 30, .text = ProgramVersionText()},
                                 {.width = 70},
                                 {.width = 100, .grows = true, .holdsPath = true},
                                 {.width = 80}},
                                scale_, font) &&
              created;
    created = cxProgressBar.CreateIn(sbarMain.Handle()) && created;
    if (!created || fileLabel_ == nullptr || dxBarStatic2_ == nullptr) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateWindowEx");
    }
    lastFocus_ = cxGridTv.Handle();
    toolBar_.SetFocusFallback(cxGridTv.Handle());
    cxGridTv.OnOpenRow = [this] { acShowFile.Execute(); };
}

void TfmMain::UseScale(TScale scale) {
    scale_ = scale;
    TFont font = MakeMessageFont(scale);
    toolBar_.SetScale(scale, font.Get());
    cxGridTv.SetScale(scale, font.Get());
    sbarMain.SetScale(scale, font.Get());
    for (const HWND control : {fileLabel_, dxBarStatic2_}) {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
    }
    // The former font goes when no control uses it any more.
    font_ = std::move(font);
    Layout();
}

void TfmMain::Layout() {
    RECT client{};
    GetClientRect(Handle(), &client);
    const auto place = [](HWND window, int left, int top, int width, int height) {
        PlaceWindow(window, {left, top, left + std::max(0, width), top + std::max(0, height)});
    };
    const int barHeight = scale_(TToolBar::kHeight);
    place(toolBar_.Handle(), 0, 0, client.right, barHeight);

    const int textHeight = TextHeight(font_.Get());
    const int fileTop = barHeight + (scale_(kFileBarHeight) - textHeight) / 2;
    const int labelWidth = TextWidth(font_.Get(), MainTexts::CurrentFile);
    const int fieldLeft = scale_(kMargin) + labelWidth + scale_(kMargin);
    place(fileLabel_, scale_(kMargin), fileTop, labelWidth, textHeight);
    place(dxBarStatic2_, fieldLeft + scale_(5), fileTop,
          std::min(scale_(kFileFieldWidth), static_cast<int>(client.right) - fieldLeft - scale_(kMargin)) -
              scale_(10),
          textHeight);

    const int listTop = barHeight + scale_(kFileBarHeight);
    const int statusTop = static_cast<int>(client.bottom) - scale_(TStatusBar::kHeight);
    cxGridTv.Place({0, listTop, client.right, std::max(listTop, statusTop)});
    place(sbarMain.Handle(), 0, statusTop, client.right, scale_(TStatusBar::kHeight));

    const RECT panel = sbarMain.PanelArea(4);
    place(cxProgressBar.Handle(), panel.left + scale_(4), panel.top + scale_(5),
          panel.right - panel.left - scale_(8), panel.bottom - panel.top - scale_(10));
    InvalidateRect(Handle(), nullptr, TRUE);
}

void TfmMain::Paint() {
    const TPaintContext paint(Handle());
    FillArea(paint.Get(), paint.Client(), Theme().windowGround);
    const int listTop = scale_(TToolBar::kHeight) + scale_(kFileBarHeight);
    const bool listHasFocus = GetFocus() == cxGridTv.Handle() && ShowsFocus(cxGridTv.Handle());
    FillArea(paint.Get(), {0, listTop - scale_(1), paint.Client().right, listTop},
             listHasFocus ? Theme().accent : Theme().border);
    RECT field{};
    GetWindowRect(dxBarStatic2_, &field);
    MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&field), 2);
    const int middle = (field.top + field.bottom) / 2;
    const RECT frame{field.left - scale_(5), middle - scale_(kFileFieldHeight) / 2, field.right + scale_(5),
                     middle + scale_(kFileFieldHeight) / 2};
    PaintRoundedBox(paint.Get(), frame,
                    {.ground = Theme().controlGround,
                     .border = GetFocus() == dxBarStatic2_ ? Theme().accent : Theme().controlBorder,
                     .outside = Theme().windowGround,
                     .thickness = scale_(1),
                     .radius = scale_(kCornerRadius)});
}

void TfmMain::ScaleChanged(TScale scale, const RECT& suggestedArea) {
    UseScale(scale);
    PlaceWindow(Handle(), suggestedArea);
}

void TfmMain::Activated(bool active) {
    if (active) {
        failureUnseen_ = false;
        return;
    }
    // A window that is no dialog forgets which of its controls had the keyboard.
    if (const HWND focus = GetFocus(); focus != nullptr && IsChild(Handle(), focus)) {
        lastFocus_ = focus;
    }
}

bool TfmMain::TranslateKey(const MSG& message) {
    if (!Exists() || (message.hwnd != Handle() && !IsChild(Handle(), message.hwnd))) {
        return false;
    }
    if (message.message == WM_KEYDOWN) {
        const bool control = GetKeyState(VK_CONTROL) < 0;
        const bool shift = GetKeyState(VK_SHIFT) < 0;
        // AltGr is Ctrl and Alt together: AltGr+Q types an @.
        const bool alt = GetKeyState(VK_MENU) < 0;
        for (TAction* action : Actions()) {
            const TShortcut& shortcut = action->Shortcut();
            if (!alt && shortcut.key == message.wParam && shortcut.control == control &&
                shortcut.shift == shift) {
                // No key alone switches anything on: it leads to the button, where the space bar does.
                if (const HWND button = toolBar_.ButtonOf(*action);
                    action->Checkable() && button != nullptr) {
                    SetFocus(button);
                } else {
                    action->Execute();
                }
                return true;
            }
        }
        if (message.wParam == VK_RETURN && GetParent(message.hwnd) == toolBar_.Handle()) {
            // A key that is held down presses once: what it started must not be stopped by it.
            if ((message.lParam & kKeyWasDown) == 0) {
                SendMessageW(message.hwnd, BM_CLICK, 0, 0);
            }
            return true;
        }
    }
    MSG copy = message;
    return IsDialogMessageW(Handle(), &copy) != FALSE;
}

// The window can be used meanwhile, so not the hourglass.
void TfmMain::ShowWaitCursor(bool wait) {
    waitCursor_ = wait;
    SetCursor(LoadCursorW(nullptr, wait ? IDC_APPSTARTING : IDC_ARROW));
}

std::optional<LRESULT> TfmMain::HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    if (message == TTaskbarProgress::ButtonCreatedMessage()) {
        taskbarProgress_.Attach(Handle());
        return 0;
    }
    if (message == EndRequestMessage()) {
        return static_cast<LRESULT>(EndRequested());
    }
    if (BringsNewColours(message, wordParameter)) {
        UseDarkFrame(Handle());
        UseScale(scale_);
        RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        return 0;
    }
    switch (message) {
        case kProgressResetMessage:
        case kProgressPositionMessage:
        case kProgressMaximumMessage:
            ProgressMessage(message, wordParameter, longParameter);
            return 0;
        case WM_NOTIFY: {
            auto& notification = *reinterpret_cast<NMHDR*>(longParameter);
            if (notification.hwndFrom != cxGridTv.Handle()) {
                return std::nullopt;
            }
            if (notification.code == NM_SETFOCUS || notification.code == NM_KILLFOCUS) {
                InvalidateRect(Handle(), nullptr, FALSE);  // the line above the list shows the focus
            }
            return cxGridTv.HandleNotification(notification);
        }
        case WM_CONTEXTMENU:
            if (reinterpret_cast<HWND>(wordParameter) != cxGridTv.Handle()) {
                return std::nullopt;
            }
            ShowListMenu(Handle(), cxGridTv,
                         {&acShowFile, &acShowCopy, nullptr, &acNextError, &acPreviousError, nullptr,
                          &acVerify, &acRunLog},
                         {GET_X_LPARAM(longParameter), GET_Y_LPARAM(longParameter)});
            return 0;
        case WM_SIZE:
            Layout();
            return 0;
        case WM_GETMINMAXINFO:
            reinterpret_cast<MINMAXINFO*>(longParameter)->ptMinTrackSize = {scale_(kLeastWidth),
                                                                            scale_(kLeastHeight)};
            return 0;
        case WM_DPICHANGED:
            ScaleChanged(TScale(HIWORD(wordParameter)), *reinterpret_cast<const RECT*>(longParameter));
            return 0;
        case WM_ACTIVATE:
            Activated(LOWORD(wordParameter) != WA_INACTIVE);
            return std::nullopt;
        case WM_SETFOCUS:
            SetFocus(IsWindowEnabled(lastFocus_) ? lastFocus_ : cxGridTv.Handle());
            return 0;
        case WM_COMMAND:
            if (reinterpret_cast<HWND>(longParameter) == dxBarStatic2_) {
                InvalidateRect(Handle(), nullptr, FALSE);  // its frame shows the focus
            }
            return 0;
        case WM_CTLCOLORSTATIC:
            if (reinterpret_cast<HWND>(longParameter) == fileLabel_) {
                return ControlColours(wordParameter, Theme().dimText, Theme().windowGround);
            }
            return ControlColours(wordParameter, Theme().text, Theme().controlGround);
        case WM_SETCURSOR:
            if (waitCursor_) {
                SetCursor(LoadCursorW(nullptr, IDC_APPSTARTING));
                return TRUE;
            }
            return std::nullopt;
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case kRunBrokenMessage:
            RunBroken();
            return 0;
        case WM_CLOSE:
            acCloseExecute();
            return 0;
        case WM_QUERYENDSESSION:
            return MayEndSession((longParameter & static_cast<LPARAM>(ENDSESSION_CRITICAL)) != 0);
        case WM_ENDSESSION:
            if (wordParameter != FALSE) {
                SessionEnds();
            }
            return 0;
        case WM_DESTROY:
            if (shown_) {
                StoreLayout(kPlaceName, StorePlace(Handle()));
            }
            PostQuitMessage(0);
            return 0;
        default:
            return std::nullopt;
    }
}
