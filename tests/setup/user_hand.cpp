// What a user's hand does at a window, for the setup's tests:
//   user_hand wait WINDOW               waits until a visible window has this caption
//   user_hand click WINDOW CONTROL      clicks the control with this caption (without its "&") in it
//   user_hand close WINDOW              closes it as its close box does
//   user_hand read WINDOW               prints the captions of all its controls
//   user_hand windows                   prints the captions of all visible windows, without waiting
// The others wait up to a minute for what they need; the exit code is 1 when it did not come.
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

constexpr DWORD kPatience = 60'000;  // milliseconds

std::wstring Caption(HWND window) {
    wchar_t text[1000] = L"";
    SendMessageTimeoutW(window, WM_GETTEXT, 1000, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 500,
                        nullptr);
    std::wstring caption(text);
    std::erase(caption, L'&');
    // The setup's changes from page to page.
    while (caption.ends_with(L' ')) {
        caption.pop_back();
    }
    return caption;
}

struct TSearch {
    std::wstring caption;
    HWND found = nullptr;
};

BOOL CALLBACK Look(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<TSearch*>(parameter);
    if (IsWindowVisible(window) && IsWindowEnabled(window) && Caption(window) == search.caption) {
        search.found = window;
    }
    return search.found == nullptr;
}

BOOL CALLBACK Print(HWND window, LPARAM) {
    if (IsWindowVisible(window)) {
        const std::wstring caption = Caption(window);
        char bytes[3000] = "";
        WideCharToMultiByte(CP_UTF8, 0, caption.c_str(), -1, bytes, sizeof(bytes), nullptr, nullptr);
        std::puts(bytes);
    }
    return TRUE;
}

HWND FindControl(HWND window, const wchar_t* caption) {
    TSearch search{caption};
    EnumChildWindows(window, Look, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND FindTopWindow(const wchar_t* caption) {
    TSearch search{caption};
    EnumWindows(Look, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring what = count > 1 ? arguments[1] : L"";
    if (what == L"windows") {
        EnumWindows(Print, 0);
        return 0;
    }
    const bool needsControl = what == L"click";
    const DWORD began = GetTickCount();
    HWND window = nullptr;
    HWND control = nullptr;
    while (window == nullptr || (needsControl && control == nullptr)) {
        if (GetTickCount() - began > kPatience) {
            std::printf("There is no such %s.\n", window == nullptr ? "window" : "control");
            return 1;
        }
        Sleep(50);
        window = FindTopWindow(arguments[2]);
        control = needsControl && window != nullptr ? FindControl(window, arguments[3]) : nullptr;
    }
    if (what == L"click") {
        PostMessageW(control, BM_CLICK, 0, 0);
    } else if (what == L"close") {
        PostMessageW(window, WM_CLOSE, 0, 0);
    } else if (what == L"read") {
        EnumChildWindows(window, Print, 0);
    }
    return 0;
}
