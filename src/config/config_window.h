// The configuration window.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "config/folder_check.h"
#include "config/source_folder_grid.h"
#include "store/settings.h"
#include "store/source_folder_table.h"
#include "support/handles.h"
#include "support/platform_calls.h"
#include "ui/action.h"
#include "ui/check_box.h"
#include "ui/grid.h"
#include "ui/message_loop.h"
#include "ui/text_field.h"
#include "ui/tool_bar.h"
#include "ui/window.h"
#include "ui/window_place.h"

// The window in which the user edits the destination, the share's credentials and the source folders. The
// settings are read whenever it is shown and written whenever it closes; the source folders change at once.
class TfmConfig final : public TWindow {
public:
    // Everything passed by reference must outlive the window. The folder has no trailing "\".
    TfmConfig(const TPlatformCalls& calls, TSourceFolderTable& memData, std::wstring configurationFolder);
    ~TfmConfig() override;

    // Shows the window and returns; when it is open already it comes to the front. Throws std::system_error
    // when the system refuses a window.
    void Show(HWND owner);
    bool IsOpen() const { return open_; }
    // Closes the window as the user does. False when it stays open: the settings could not be saved and the
    // user wants to go on editing, or the table refused what he was entering, which he is told.
    bool Close();
    // The same for a run that is about to begin, without a question: what cannot be saved stays open, with
    // the reason, and false is returned.
    bool CloseForRun();

    // Called when the window has closed and all that was entered is in the table: losing it to a crash hours
    // later would be a pity.
    std::function<void()> OnClosed;

    // What a test puts in place of dialogs. The picker gets owner, title and start folder.
    std::function<std::optional<std::wstring>(HWND, const std::wstring&, const std::wstring&)>
        ShellBrowserDialog;
    std::function<bool(const std::wstring& question)> AskUser;

    TAction acClose;
    TAction acGetDirectory;

    TToolBar dxBarManager1Bar1;
    TTextField EdBackupPath;
    TCheckBox cxCheckBox1;
    TTextField cxTextEdit1;
    TTextField cxTextEdit2;
    TGridColumns cxGridDBTv{SourceFolderColumns()};
    TSourceFolderGrid dsMemData;
    TGrid cxGrid{cxGridDBTv, dsMemData};
    // What the user is told in the window: of the settings and of what he did, and below that what the next
    // run makes of the rows. Empty if nothing.
    const std::wstring& Notice() const { return notice_; }
    const std::wstring& Warnings() const { return warnings_; }

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    void FormCreate(HWND owner);
    void FormShow();
    // What is left to tell the user: why the settings could not be saved.
    [[nodiscard]] std::optional<TProblem> FormClose();
    void acCloseExecute();
    void acGetDirectoryExecute();
    void cxGridDBTvDirectoryPropertiesButtonClick();
    void EdBackupPathPropertiesButtonClick();

    void CreateControls();
    void UseScale(TScale scale);
    void Layout();
    void PlaceOn(HWND owner, const std::optional<TWindowPlace>& place);
    void Paint();
    void ShowNotice(std::wstring notice);
    void RowsChanged();
    void ShowWarnings();
    void UpdateNoticeLine();
    void LoadFields();
    [[nodiscard]] std::optional<TProblem> SaveFields();
    [[nodiscard]] bool TakeOverEdit();
    void ForgetCredentials();
    void InsertFolder(const std::wstring& folder);
    std::optional<std::wstring> AskForFolder(const std::wstring& startFolder);
    std::optional<std::wstring> PickExistingFolder(const std::wstring& startFolder);
    bool Ask(const std::wstring& question);
    void Activated(bool active);
    void PressFocusedButton();
    void ScaleChanged(TScale scale, const RECT& suggestedArea);
    void CloseWithoutQuestion();
    void Hide();
    SIZE ClientSize(int width, int height) const;
    std::wstring IniPath() const { return configurationFolder_ + L"\\NASConf.ini"; }

    const TPlatformCalls& calls_;
    TSourceFolderTable& memData_;
    const std::wstring configurationFolder_;

    HWND noticeLine_ = nullptr;
    std::wstring notice_;
    std::wstring warnings_;
    std::wstring settingsNotice_;  // of the settings, for as long as the window is open
    TFolderCheck folderCheck_;
    TScale scale_;
    TFont font_;
    TMessageFilter keyFilter_;
    HWND lastFocus_ = nullptr;
    bool open_ = false;
    bool refused_ = false;  // an edit, since the window was last turned to or left
    // Known, and so written, is what could be read or was changed by the user; the fields hold the values.
    TSettings settings_;
};
