#include "ui/window.h"

#include <exception>
#include <set>
#include <system_error>

#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/ui_texts.h"

namespace {

std::function<void(const std::wstring&)>& UnexpectedErrorHandler() {
    static std::function<void(const std::wstring&)> handler = [](const std::wstring& text) {
        OutputDebugStringW((text + L"\n").c_str());
    };
    return handler;
}

HINSTANCE ProgramInstance() {
    return GetModuleHandleW(nullptr);
}

void TellUnexpectedError(const std::wstring& text) {
    if (const auto& handler = UnexpectedErrorHandler()) {
        handler(text);
    }
}

}  // namespace

bool RunGuarded(const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const std::exception& error) {
        TellUnexpectedError(ProblemText(ProblemOf(error), &SystemErrorText));
    } catch (...) {
        TellUnexpectedError(UiTexts::UnknownError);
    }
    return false;
}

void SetUnexpectedErrorHandler(std::function<void(const std::wstring& text)> handler) {
    UnexpectedErrorHandler() = std::move(handler);
}

HWND CreateChild(HWND parent, const wchar_t* className, const std::wstring& text, DWORD style,
                 DWORD extendedStyle) {
    return CreateWindowExW(extendedStyle, className, text.c_str(), WS_CHILD | style, 0, 0, 0, 0, parent,
                           nullptr, ProgramInstance(), nullptr);
}

void PlaceWindow(HWND window, const RECT& area) {
    SetWindowPos(window, nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void ReadWindowText(HWND window, std::wstring& text) {
    text.resize(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1);
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
}

bool ShowsFocus(HWND control) {
    return (SendMessageW(control, WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS) == 0;
}

TWindow::~TWindow() {
    Destroy();
}

void TWindow::Destroy() {
    if (handle_ != nullptr) {
        DestroyWindow(handle_);
    }
}

bool TWindow::Create(const TCreateOptions& options) {
    static std::set<std::wstring> registered;
    if (!registered.contains(options.className)) {
        WNDCLASSEXW windowClass{};
        windowClass.cbSize = sizeof(windowClass);
        windowClass.style = options.classStyle;
        windowClass.lpfnWndProc = &TWindow::Procedure;
        windowClass.hInstance = ProgramInstance();
        windowClass.hIcon = options.icon;
        windowClass.hIconSm = options.smallIcon;
        windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        windowClass.hbrBackground = options.background;
        windowClass.lpszClassName = options.className.c_str();
        if (RegisterClassExW(&windowClass) == 0) {
            return false;
        }
        registered.insert(options.className);
    }
    return CreateWindowExW(options.extendedStyle, options.className.c_str(), options.caption.c_str(),
                           options.style, options.left, options.top, options.width, options.height,
                           options.parent, options.menuOrId, ProgramInstance(), this) != nullptr;
}

LRESULT TWindow::DefaultProcessing(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    return DefWindowProcW(handle_, message, wordParameter, longParameter);
}

LRESULT TWindow::Dispatch(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    std::optional<LRESULT> answer;
    if (!RunGuarded([&] { answer = HandleMessage(message, wordParameter, longParameter); })) {
        return 0;
    }
    return answer ? *answer : DefaultProcessing(message, wordParameter, longParameter);
}

LRESULT CALLBACK TWindow::Procedure(HWND handle, UINT message, WPARAM wordParameter, LPARAM longParameter) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(longParameter);
        auto* window = static_cast<TWindow*>(create->lpCreateParams);
        window->handle_ = handle;
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
    }
    auto* window = reinterpret_cast<TWindow*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
    if (window == nullptr) {
        return DefWindowProcW(handle, message, wordParameter, longParameter);
    }
    const LRESULT result = window->Dispatch(message, wordParameter, longParameter);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(handle, GWLP_USERDATA, 0);
        window->handle_ = nullptr;
    }
    return result;
}

TMessageWindow::TMessageWindow(Handler handler) : handler_(std::move(handler)) {
    TCreateOptions options;
    options.className = L"VardekoMessageWindow";
    options.style = 0;
    options.parent = HWND_MESSAGE;
    if (!Create(options)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateWindowEx");
    }
}

std::optional<LRESULT> TMessageWindow::HandleMessage(UINT message, WPARAM wordParameter,
                                                     LPARAM longParameter) {
    return handler_(message, wordParameter, longParameter);
}
