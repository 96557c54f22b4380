#include "config/config_window.h"

#include <utility>

#include "config/folder_picker.h"
#include "config/row_rules.h"
#include "support/file_access.h"
#include "support/system_error.h"
#include "texts/config_texts.h"
#include "texts/problem_text.h"
#include "ui/layout_store.h"
#include "ui/question_box.h"
#include "ui/window_scale.h"

namespace {

constexpr wchar_t kGridViewName[] = L"ConfigGrid";
constexpr wchar_t kPlaceName[] = L"ConfigWindow";  // of the window, beside the grid's layout
constexpr wchar_t kDefaultExtensions[] = L".pdf,.docx,.xlsx,.jpg";

// Keeps the windows behind a dialog from being used: the dialog itself locks its own owner only.
class TLockedWindow {
public:
    explicit TLockedWindow(HWND window)
        : window_(window != nullptr && IsWindowEnabled(window) ? window : nullptr) {
        if (window_ != nullptr) {
            EnableWindow(window_, FALSE);
        }
    }
    TLockedWindow(const TLockedWindow&) = delete;
    TLockedWindow& operator=(const TLockedWindow&) = delete;
    ~TLockedWindow() {
        if (window_ != nullptr) {
            EnableWindow(window_, TRUE);
        }
    }

private:
    HWND window_;
};

}  // namespace

TfmConfig::TfmConfig(const TPlatformCalls& calls, TSourceFolderTable& memData,
                     std::wstring configurationFolder)
    : ShellBrowserDialog(&PickFolder),
      acClose({.caption = ConfigTexts::Close,
               .hint = ConfigTexts::Close,
               .image = TImageIndex::Close,
               .execute = [this] { acCloseExecute(); }}),
      acGetDirectory({.caption = ConfigTexts::InsertFolder,
                      .hint = ConfigTexts::InsertFolder,
                      .image = TImageIndex::Folder,
                      .execute = [this] { acGetDirectoryExecute(); }}),
      dsMemData(memData),
      calls_(calls),
      memData_(memData),
      configurationFolder_(std::move(configurationFolder)),
      folderCheck_([this] { ShowWarnings(); }),
      keyFilter_([this](MSG& message) { return open_ && IsDialogMessageW(Handle(), &message); }) {
    AskUser = [this](const std::wstring& question) {
        return AskYesNo(Handle(), ConfigTexts::Window, question);
    };
    dsMemData.OnButtonClick = [this] { cxGridDBTvDirectoryPropertiesButtonClick(); };
    dsMemData.OnDeleting = [this](const std::wstring& folder) {
        return Ask(ConfigTexts::DeleteQuestion(folder));
    };
    dsMemData.OnProblem = [this](const TProblem& problem) {
        refused_ = true;
        ShowNotice(ProblemText(problem, &SystemErrorText));
    };
    dsMemData.OnChanged = [this] { RowsChanged(); };
    dsMemData.OnTaken = [this] { ShowNotice(settingsNotice_); };
    dsMemData.IsMissing = [this](const SourceFolderRow& row) {
        return row.Aktive.value_or(false) && folderCheck_.IsMissing(row);
    };
}

TfmConfig::~TfmConfig() {
    RunGuarded([this] { CloseWithoutQuestion(); });
    Destroy();
}

void TfmConfig::Show(HWND owner) {
    if (!Exists()) {
        FormCreate(owner);
    }
    if (!open_) {
        UseScale(ScaleOfWindow(owner != nullptr ? owner : Handle()));
        FormShow();
        const std::optional<std::wstring> place = LoadLayout(kPlaceName);
        PlaceOn(owner, place ? RestorePlace(*place) : std::nullopt);
        open_ = true;
    }
    ShowWindow(Handle(), IsIconic(Handle()) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Handle());
    SetFocus(EdBackupPath.Edit());
}

void TfmConfig::FormShow() {
    if (const std::optional<std::wstring> layout = LoadLayout(kGridViewName);
        layout && cxGridDBTv.Restore(*layout)) {
        cxGrid.ColumnsChanged();
    }
    LoadFields();
    folderCheck_.Forget();
    folderCheck_.Ask(calls_, memData_.Rows());
    ShowWarnings();
}

void TfmConfig::LoadFields() {
    settings_ = {};
    const std::optional<TProblem> problem = ReadSettings(calls_, IniPath(), settings_);
    EdBackupPath.SetText(settings_.NASDIR.value);
    cxCheckBox1.SetChecked(settings_.CONNECT.value);
    cxTextEdit1.SetText(settings_.USER.value.text);
    cxTextEdit2.SetText(settings_.PASS.value.text);
    ForgetCredentials();
    settingsNotice_ = problem ? ProblemText(*problem, &SystemErrorText) : std::wstring();
    ShowNotice(settingsNotice_);
}

void TfmConfig::RowsChanged() {
    if (open_) {
        folderCheck_.Ask(calls_, memData_.Rows());
        ShowWarnings();
    }
}

void TfmConfig::ShowWarnings() {
    const std::vector<SourceFolderRow>& rows = memData_.Rows();
    const std::optional<std::size_t> current =
        rows.empty() ? std::nullopt : std::optional(memData_.RowNumber());
    TRowRules rules = RulesOf(rows, current, dsMemData.IsMissing);
    warnings_.clear();
    const auto add = [this](const std::wstring& line) {
        warnings_ += (warnings_.empty() ? L"" : L"\n") + line;
    };
    if (!rules.missing.empty()) {
        for (std::size_t& row : rules.missing) {
            ++row;
        }
        add(ConfigTexts::FoldersNotThere(rules.missing));
    }
    const auto folderOf = [&](std::size_t row) { return rows[row].Directory.value_or(L""); };
    if (rules.filter) {
        add(ConfigTexts::FilterOfRow(*rules.filter + 1, folderOf(*rules.filter)));
    }
    if (rules.history) {
        add(ConfigTexts::HistoryOfRow(*rules.history + 1, folderOf(*rules.history),
                                      rows[*rules.history].History.value_or(false)));
    }
    UpdateNoticeLine();
    if (cxGrid.Exists()) {
        InvalidateRect(cxGrid.Handle(), nullptr, FALSE);  // the marks of its rows
    }
}

std::optional<TProblem> TfmConfig::FormClose() {
    StoreLayout(kGridViewName, cxGridDBTv.Store());
    StoreLayout(kPlaceName, StorePlace(Handle()));
    std::optional<TProblem> problem = SaveFields();
    cxGrid.TakeOver();
    dsMemData.PostEdit();
    return problem;
}

std::optional<TProblem> TfmConfig::SaveFields() {
    EdBackupPath.ReadText(settings_.NASDIR.value);
    settings_.CONNECT.value = cxCheckBox1.Checked();
    cxTextEdit1.ReadText(settings_.USER.value.text);
    cxTextEdit2.ReadText(settings_.PASS.value.text);
    std::optional<TProblem> problem = WriteSettings(calls_, IniPath(), settings_);
    ForgetCredentials();
    return problem;
}

// Their fields alone hold them.
void TfmConfig::ForgetCredentials() {
    settings_.USER.value = {};
    settings_.PASS.value = {};
}

// An edit ends when something else is clicked, also one that the table refuses: closing upon that would let
// the user believe that it was taken.
bool TfmConfig::TakeOverEdit() {
    cxGrid.TakeOver();
    dsMemData.PostEdit();
    if (!std::exchange(refused_, false)) {
        return true;
    }
    Show(GetWindow(Handle(), GW_OWNER));
    return false;
}

bool TfmConfig::Close() {
    if (!open_) {
        return true;
    }
    if (!TakeOverEdit()) {
        return false;
    }
    const std::optional<TProblem> problem = FormClose();
    if (problem && !Ask(ConfigTexts::CloseQuestion(ProblemText(*problem, &SystemErrorText)))) {
        return !open_;
    }
    if (!open_) {  // closed while the user was asked
        return true;
    }
    Hide();
    return true;
}

bool TfmConfig::CloseForRun() {
    if (!open_) {
        return true;
    }
    if (!TakeOverEdit()) {
        return false;
    }
    if (const std::optional<TProblem> problem = FormClose()) {
        ShowNotice(ProblemText(*problem, &SystemErrorText));
        Show(GetWindow(Handle(), GW_OWNER));
        return false;
    }
    Hide();
    return true;
}

void TfmConfig::Hide() {
    open_ = false;
    ShowWindow(Handle(), SW_HIDE);
    // Not to be kept in a window that nobody sees.
    cxTextEdit1.SetText(L"");
    cxTextEdit2.SetText(L"");
    if (const HWND owner = GetWindow(Handle(), GW_OWNER); owner != nullptr) {
        SetForegroundWindow(owner);
    }
    if (OnClosed) {
        OnClosed();
    }
}

// The program or the session ends: nobody may be there to answer. A failure goes where mistakes go.
void TfmConfig::CloseWithoutQuestion() {
    if (std::exchange(open_, false)) {
        if (const std::optional<TProblem> problem = FormClose()) {
            throw EProblem(*problem);
        }
    }
}

void TfmConfig::acCloseExecute() {
    refused_ = false;
    SetFocus(EdBackupPath.Edit());
    Close();
}

void TfmConfig::acGetDirectoryExecute() {
    cxGrid.TakeOver();
    if (const std::optional<std::wstring> folder = PickExistingFolder(L"")) {
        InsertFolder(*folder);
    }
}

void TfmConfig::InsertFolder(const std::wstring& folder) {
    if (!dsMemData.PostEdit()) {
        return;
    }
    // The order of the rows is the order of their insertion.
    memData_.Append();
    SourceFolderRow& row = memData_.Working();
    row.Aktive = true;
    row.Directory = folder;
    row.Rekursiv = true;
    row.Extensions = kDefaultExtensions;
    row.ExtensionMode = L"NO";
    row.History = false;
    row.Hidden = false;
    dsMemData.PostEdit();
}

void TfmConfig::cxGridDBTvDirectoryPropertiesButtonClick() {
    const std::uint64_t recId = memData_.RecId(memData_.RowNumber());
    const std::optional<std::wstring> folder = PickExistingFolder(memData_.Current().Directory.value_or(L""));
    // Messages were handled in between: the row must still be the current one.
    if (folder && !memData_.IsEmpty() && memData_.RecId(memData_.RowNumber()) == recId) {
        memData_.Edit();
        memData_.Working().Directory = *folder;
        dsMemData.PostEdit();
    }
}

void TfmConfig::EdBackupPathPropertiesButtonClick() {
    // Taken as it is: a share may show its folders only after the logon.
    if (const std::optional<std::wstring> folder = AskForFolder(EdBackupPath.Text())) {
        EdBackupPath.SetText(*folder);
        settings_.NASDIR.known = true;
    }
}

std::optional<std::wstring> TfmConfig::AskForFolder(const std::wstring& startFolder) {
    const TLockedWindow owner(GetWindow(Handle(), GW_OWNER));
    std::optional<std::wstring> folder;
    try {
        folder = ShellBrowserDialog(Handle(), ConfigTexts::FolderPicker, startFolder);
    } catch (const std::exception& error) {
        // No mistake of a run that may be on.
        ShowNotice(ConfigTexts::NoFolderPicker(ProblemText(ProblemOf(error), &SystemErrorText)));
    }
    return open_ ? folder : std::nullopt;
}

std::optional<std::wstring> TfmConfig::PickExistingFolder(const std::wstring& startFolder) {
    std::optional<std::wstring> folder = AskForFolder(startFolder);
    if (!folder) {
        return std::nullopt;
    }
    // The picker lets names through that were typed.
    if (!FolderExists(calls_, *folder)) {
        ShowNotice(ConfigTexts::FolderMissing(*folder));
        return std::nullopt;
    }
    ShowNotice(settingsNotice_);
    return folder;
}

bool TfmConfig::Ask(const std::wstring& question) {
    const TLockedWindow owner(GetWindow(Handle(), GW_OWNER));
    return AskUser(question) && open_;
}
