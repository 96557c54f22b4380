// A check box in the dark look.
#pragma once

#include <windows.h>

#include <string>

#include "ui/dpi.h"

// The system's check box, so that keyboard and screen readers know it, drawn by us. Its clicks reach the
// parent as WM_COMMAND.
class TCheckBox {
public:
    TCheckBox() = default;
    TCheckBox(const TCheckBox&) = delete;
    TCheckBox& operator=(const TCheckBox&) = delete;

    [[nodiscard]] bool CreateIn(HWND parent, const std::wstring& caption, TScale scale, HFONT font);
    void SetScale(TScale scale, HFONT font);
    // The size that mark and caption need, in device pixels.
    SIZE PreferredSize() const;

    HWND Handle() const { return handle_; }
    bool Checked() const { return SendMessageW(handle_, BM_GETCHECK, 0, 0) == BST_CHECKED; }
    void SetChecked(bool checked);

private:
    void Paint() const;
    static LRESULT CALLBACK Procedure(HWND handle, UINT message, WPARAM wordParameter, LPARAM longParameter,
                                      UINT_PTR id, DWORD_PTR data);

    HWND handle_ = nullptr;
    std::wstring caption_;
    TScale scale_;
    HFONT font_ = nullptr;
};
