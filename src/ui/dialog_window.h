// What windows that ask or tell something have in common.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/handles.h"
#include "ui/dpi.h"
#include "ui/timer.h"
#include "ui/window.h"

// A dark borderless window with push buttons, centred on its owner and modal for the user: it disables the
// thread's other windows while it is there. It has no message loop of its own, so whatever the window's
// thread was doing when it came up, a copy for instance, goes on.
class TDialogWindow : public TWindow {
public:
    TDialogWindow();
    ~TDialogWindow() override;

    // Puts the window away at once and gives the other windows back to the user.
    void CloseNow();

    // Lets the window vanish from opacity 255 to 0, one step each 8 ms, then does the same and calls
    // `closed`.
    void FadeOut(std::function<void()> closed);

protected:
    // Creates the window over its owner (null: the screen) and shows it. `size`: of the client area at 100 %.
    [[nodiscard]] bool Open(HWND owner, const std::wstring& caption, SIZE size);

    // For AddControls: creates a child. Its place is given in Arrange.
    HWND AddControl(const wchar_t* className, const std::wstring& text, DWORD style);
    HWND AddButton(int id, const std::wstring& text);

    const TScale& Scale() const { return scale_; }
    HFONT Font() const { return font_.Get(); }

    virtual void AddControls() = 0;
    // Gives the controls their places; called again when the scale changes.
    virtual void Arrange() = 0;
    // Draws what is no control.
    virtual void Paint(HDC context, const RECT& client) = 0;
    virtual void ButtonClicked(int id) = 0;
    // The Escape key, or the system asks the window to close.
    virtual void CancelWanted() = 0;

    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    void DisableOtherWindows();
    void EnableOtherWindows();
    HWND Adopt(HWND control);
    bool HandleKey(WPARAM virtualKey);
    static LRESULT CALLBACK KeyProcedure(HWND control, UINT message, WPARAM wordParameter,
                                         LPARAM longParameter, UINT_PTR id, DWORD_PTR data);
    void SetFontOfControls();
    void ScaleChanged(UINT dpi, const RECT& area);
    void DrawButton(const DRAWITEMSTRUCT& draw) const;
    void FadeStep();

    TScale scale_;
    TFont font_;
    std::vector<HWND> controls_;
    std::vector<HWND> disabled_;
    HWND focusBefore_ = nullptr;
    TTimer fadeTimer_;
    std::chrono::steady_clock::time_point fadeBegin_;
    std::function<void()> fadeEnded_;
};
