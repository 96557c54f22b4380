#include "ui/tool_tips.h"

#include <commctrl.h>

#include "ui/dark_mode.h"
#include "ui/device_context.h"
#include "ui/window_scale.h"

namespace {

constexpr int kMaximumWidth = 420;  // at a scale of 100 %

}  // namespace

TToolTips::~TToolTips() {
    // Gone with its owner, when that was destroyed first.
    if (IsWindow(handle_)) {
        DestroyWindow(handle_);
    }
}

void TToolTips::SetHint(HWND owner, HWND control, const std::wstring& hint) {
    TTTOOLINFOW tool{};
    tool.uFlags = TTF_IDISHWND;
    tool.hwnd = owner;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    Set(tool, hint);
}

void TToolTips::SetAreaHint(HWND owner, unsigned number, const RECT& area, const std::wstring& hint) {
    TTTOOLINFOW tool{};
    tool.hwnd = owner;
    tool.uId = number;
    tool.rect = area;
    Set(tool, hint);
}

void TToolTips::Set(TTTOOLINFOW& tool, const std::wstring& hint) {
    if (!IsWindow(handle_)) {
        handle_ =
            CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                            0, 0, 0, 0, tool.hwnd, nullptr, GetModuleHandleW(nullptr), nullptr);
        RemoveVisualStyle(handle_);
        // Without a width, line breaks are not obeyed, either.
        SendMessageW(handle_, TTM_SETMAXTIPWIDTH, 0, ScaleOfWindow(tool.hwnd)(kMaximumWidth));
    }
    SendMessageW(handle_, TTM_SETTIPBKCOLOR, ColorRefOf(Theme().headerGround), 0);
    SendMessageW(handle_, TTM_SETTIPTEXTCOLOR, ColorRefOf(Theme().text), 0);
    std::wstring text = hint;
    tool.cbSize = sizeof(tool);
    tool.uFlags |= TTF_SUBCLASS;
    tool.lpszText = text.data();
    SendMessageW(handle_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    if (hint.empty()) {
        return;
    }
    SendMessageW(handle_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}
