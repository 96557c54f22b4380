// A message box that holds up nobody.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/dialog_window.h"

// Asks a yes-or-no question over its owner (null: the screen) and waits for the answer, in a message loop of
// its own. "Nein" is what Enter, Escape and everything but a press of "Ja" mean. The owner, its text or a run
// may be gone or begun when it returns.
[[nodiscard]] bool AskYesNo(HWND owner, const std::wstring& title, const std::wstring& text);

// Shows a text with buttons and tells later which one was pressed. The system's own message box would not
// return before that, and with it whatever the window's thread was doing.
class TQuestionBox final : public TDialogWindow {
public:
    // Number of the pressed button, counted from 0; the last one when the box was put away otherwise.
    using TAnswered = std::function<void(std::size_t button)>;

    // Shows the box over its owner, with the focus on one of its buttons; an older one is put away without an
    // answer.
    void Ask(HWND owner, const std::wstring& title, const std::wstring& text,
             std::vector<std::wstring> buttons, TAnswered answered, std::size_t focusedButton = 0);

protected:
    void AddControls() override;
    void Arrange() override;
    void Paint(HDC context, const RECT& client) override;
    void ButtonClicked(int id) override;
    void CancelWanted() override;

private:
    std::wstring title_;
    std::wstring text_;
    std::vector<std::wstring> captions_;
    std::vector<HWND> buttons_;
    TAnswered answered_;
};
