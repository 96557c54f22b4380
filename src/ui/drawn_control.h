// The base of the controls that the program draws itself.
#pragma once

#include <windows.h>

#include "ui/window.h"

// A child window that paints the whole of its area, so that nothing is erased before and nothing flickers.
class TDrawnControl : public TWindow {
protected:
    // Creates the control in its parent, still without a size; WS_CHILD is added to the style. False when the
    // system refuses.
    [[nodiscard]] bool CreateControl(HWND parent, const wchar_t* className, DWORD style = WS_VISIBLE,
                                     DWORD extendedStyle = 0, UINT classStyle = 0);

    // Answers WM_PAINT with a TPaintContext.
    virtual void Paint() = 0;

    // Has the control painted again when there is time.
    void Repaint() { InvalidateRect(Handle(), nullptr, FALSE); }

    // A control with messages of its own hands the others on to this.
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;
};
