// The hints that appear beside the pointer.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

// The tool tips of one window's controls, in the dark look.
class TToolTips {
public:
    TToolTips() = default;
    TToolTips(const TToolTips&) = delete;
    TToolTips& operator=(const TToolTips&) = delete;
    ~TToolTips();

    // Gives a control its hint; a second call changes it, an empty one takes it away. The control is a child
    // of any depth of `owner`.
    void SetHint(HWND owner, HWND control, const std::wstring& hint);
    // The same for a part of the owner's own area, under a small number: where a disabled control stands, the
    // pointer is over its owner.
    void SetAreaHint(HWND owner, unsigned number, const RECT& area, const std::wstring& hint);

private:
    void Set(TTTOOLINFOW& tool, const std::wstring& hint);

    HWND handle_ = nullptr;
};
