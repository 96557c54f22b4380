// The picture of the update check.
#pragma once

#include <functional>
#include <string>

#include "ui/action.h"
#include "ui/dialog_window.h"

// Shows the group box "Status" with the log, the label and the three buttons. What they show and do belongs
// to its owner, TfmUpdateCheck.
class TUpdateWindow final : public TDialogWindow {
public:
    // The actions must outlive the object; `cancel` is the third button, the Escape key and the close
    // command.
    TUpdateWindow(TAction& acSearchForUpdates, TAction& acDownload, std::function<void()> cancel);

    [[nodiscard]] bool ShowOver(HWND owner);

    // Only while the window exists.
    void SetLog(const std::wstring& text);
    void SetLabel(const std::wstring& text);

protected:
    void AddControls() override;
    void Arrange() override;
    void Paint(HDC context, const RECT& client) override;
    void ButtonClicked(int id) override;
    void CancelWanted() override;

private:
    void UpdateButtons();
    void FitLog();

    TAction& acSearchForUpdates_;
    TAction& acDownload_;
    std::function<void()> cancel_;
    HWND connectLogBox_ = nullptr;
    HWND cxLabel1_ = nullptr;
    HWND searchButton_ = nullptr;
    HWND downloadButton_ = nullptr;
    HWND btnCancel_ = nullptr;
};
