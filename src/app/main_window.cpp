// The main window's work: runs, reports and the end of the program. Its controls are in
// main_window_controls.cpp.
#include "app/main_window.h"

#include <chrono>
#include <utility>

#include "app/shutdown.h"
#include "engine/run_log.h"
#include "support/date_time_text.h"
#include "support/file_access.h"
#include "support/system_error.h"
#include "support/user_locale.h"
#include "texts/main_texts.h"
#include "texts/run_log_text.h"
#include "texts/run_texts.h"
#include "ui/device_context.h"
#include "ui/question_box.h"

namespace {

constexpr UINT kStartDelay = 1500;       // milliseconds
constexpr UINT kShowInterval = 60;       // milliseconds
constexpr UINT kCloseInterval = 20;      // milliseconds
constexpr UINT kForgottenAfter = 10000;  // milliseconds without any input
constexpr unsigned kShutDownDelay = 60;  // seconds
constexpr unsigned kShutDownTakes = 60;  // seconds
constexpr INT_PTR kLastShellError = 32;  // what ShellExecute answers above it is success

constexpr std::size_t kBytesPanel = 2;
constexpr std::size_t kPathPanel = 3;
constexpr std::size_t kProgressPanel = 4;

std::function<bool()> WhenIdle() {
    return [] { return CopyIdle; };
}

std::function<bool()> WhenBusy() {
    return [] { return !CopyIdle; };
}

std::wstring Now() {
    return DateTimeText(CurrentDateTime());
}

}  // namespace

TfmMain::TfmMain(const TPlatformCalls& calls, TCommandLine commandLine)
    : acClose({.caption = MainTexts::Close,
               .hint = MainTexts::Close,
               .image = TImageIndex::Close,
               .shortcut = {.key = 'Q', .control = true, .name = MainTexts::CloseKeys},
               .enabledWhen = WhenIdle(),
               .execute = [this] { acCloseExecute(); }}),
      acStartCopy({.caption = MainTexts::StartCopy,
                   .hint = MainTexts::StartCopy,
                   .image = TImageIndex::StartCopy,
                   .shortcut = {.key = VK_F5, .name = MainTexts::StartCopyKeys},
                   .enabledWhen = WhenIdle(),
                   .execute = [this] { acStartCopyExecute(); }}),
      acStopCopy({.caption = MainTexts::StopCopy,
                  .hint = MainTexts::StopCopy,
                  .image = TImageIndex::StopCopy,
                  .shortcut = {.key = VK_F5, .shift = true, .name = MainTexts::StopCopyKeys},
                  .enabledWhen = WhenBusy(),
                  .execute = [this] { acStopCopyExecute(); }}),
      acConfigCopy({.caption = MainTexts::Configure,
                    .hint = MainTexts::Configure,
                    .image = TImageIndex::Configure,
                    .shortcut = {.key = 'E', .control = true, .name = MainTexts::ConfigureKeys},
                    .enabledWhen = WhenIdle(),
                    .execute = [this] { acConfigCopyExecute(); }}),
      acShutDown({.caption = MainTexts::ShutDown,
                  .hint = MainTexts::ShutDownHint,
                  .image = TImageIndex::ShutDown,
                  .shortcut = {.key = 'H', .control = true, .name = MainTexts::ShutDownKeys},
                  .checkable = true,
                  .execute = [this] { acShutDownExecute(); }}),
      acReindex({.caption = MainTexts::Reindex,
                 .hint = MainTexts::ReindexHint,
                 .image = TImageIndex::Reindex,
                 .shortcut = {.key = 'R', .control = true, .shift = true, .name = MainTexts::ReindexKeys},
                 .visible = false,
                 .enabledWhen = WhenIdle(),
                 .execute = [this] { acReindexExecute(); }}),
      acUpdate({.caption = MainTexts::Update,
                .hint = MainTexts::Update,
                .image = TImageIndex::Update,
                .shortcut = {.key = 'U', .control = true, .name = MainTexts::UpdateKeys},
                .visible = false,
                .execute = [this] { acUpdateExecute(); }}),
      acVerify({.caption = MainTexts::Verify,
                .shortcut = {.key = 'P', .control = true, .name = MainTexts::VerifyKeys},
                .visible = false,
                .enabledWhen = WhenIdle(),
                .execute = [this] { acVerifyExecute(); }}),
      acRunLog({.caption = MainTexts::OpenRunLog,
                .shortcut = {.key = 'L', .control = true, .name = MainTexts::OpenRunLogKeys},
                .visible = false,
                .execute = [this] { acRunLogExecute(); }}),
      acNextError({.caption = MainTexts::NextError,
                   .shortcut = {.key = VK_F8, .name = MainTexts::NextErrorKeys},
                   .visible = false,
                   .enabledWhen = [this] { return rows_.HasErrors(); },
                   .execute = [this] { SelectError(true); }}),
      acPreviousError({.caption = MainTexts::PreviousError,
                       .shortcut = {.key = VK_F8, .shift = true, .name = MainTexts::PreviousErrorKeys},
                       .visible = false,
                       .enabledWhen = [this] { return rows_.HasErrors(); },
                       .execute = [this] { SelectError(false); }}),
      acShowFile({.caption = MainTexts::ShowFile,
                  .visible = false,
                  .enabledWhen = [this] { return !CurrentPath().empty(); },
                  .execute = [this] { ShowInFolder(CurrentPath()); }}),
      acShowCopy({.caption = MainTexts::ShowCopy,
                  .visible = false,
                  .enabledWhen = [this] { return !CurrentPath().empty(); },
                  .execute = [this] { ShowInFolder(dataModule_->PathOfCopy(CurrentPath())); }}),
      acPauseCopy({.visible = false}),
      acMinWin({.caption = MainTexts::Minimize, .visible = false}),
      acAbout({.caption = MainTexts::About, .visible = false}),
      calls_(calls),
      commandLine_(commandLine),
      Timer(kStartDelay, [this] { TimerTimer(); }),
      UpdateTimer(kStartDelay, [this] { UpdateTimerTimer(); }),
      showTimer_(kShowInterval, [this] { PaintNow(); }),
      closeTimer_(kCloseInterval, [this] { CloseWhenPossible(); }),
      menuTimer_(kForgottenAfter / 2, [this] { EndForgottenMenu(); }),
      keyFilter_([this](const MSG& message) { return TranslateKey(message); }) {}

TfmMain::~TfmMain() {
    Destroy();
}

void TfmMain::Show(TDM& dataModule, TCompanionWindows& companions, int showCommand) {
    dataModule_ = &dataModule;
    companions_ = &companions;
    FormShow();
    const bool asUsual = showCommand == SW_SHOWNORMAL || showCommand == SW_SHOWDEFAULT;
    ShowWindow(Handle(), asUsual && maximized_ ? SW_SHOWMAXIMIZED : showCommand);
    shown_ = showCommand != SW_HIDE;
    UpdateWindow(Handle());
}

void TfmMain::FormShow() {
    aShowMessage = true;
    CloseAfterCopy = false;
    dataModule_->SetMessage = [this](TDM&, const std::wstring& text, TMessagePos kind,
                                     const std::wstring& reason) { SetMessage(text, kind, reason); };
    dataModule_->WhileWaiting = [this](TDM&) {
        if (Exists()) {
            AfterReport();
        }
    };
    dataModule_->DoNasFinishMsg = [this](TDM&) { DoNasFinishMsg(); };
    dataModule_->myHandle = Handle();
    dataModule_->SetUnattended(commandLine_.IsUnattended());
    if (commandLine_.IsUnattended()) {
        if (commandLine_.msgOff) {
            aShowMessage = false;
        }
        CloseAfterCopy = true;
        if (commandLine_.shutDown) {
            // Not as a click would: the image stays.
            acShutDown.SetChecked(true);
        }
        Timer.SetEnabled(true);
    }
}

int TfmMain::ExitCode() const {
    TExitCode code = dataModule_->HasRun()         ? dataModule_->ExitCode()
                     : commandLine_.IsUnattended() ? TExitCode::NotAllCopied
                                                   : TExitCode::AllCopied;
    if (unexpectedErrors_ && code != TExitCode::BadCopies) {
        code = TExitCode::NotAllCopied;
    }
    return static_cast<int>(code);
}

// Actions and timers.

void TfmMain::acCloseExecute() {
    if (companions_ == nullptr || companions_->CloseConfiguration()) {
        RequestClose();
    }
}

void TfmMain::acStartCopyExecute() {
    // What was entered counts, or the run would use a destination that nobody sees any more.
    if (companions_->CloseConfigurationForRun()) {
        StartRun({});
    }
}

void TfmMain::acVerifyExecute() {
    if (companions_->CloseConfigurationForRun()) {
        StartRun({.copy = false, .check = TCheckOrder()});
    }
}

void TfmMain::StartRun(const TRunOrder& order) {
    // A reindex that was stopped is still on the stack until it has unwound.
    if (closing_ || dataModule_->IsReindexing() || !CopyIdle) {
        return;
    }
    rows_.Clear();
    failureUnseen_ = false;
    sbarMain.SetText(kBytesPanel, L"0");
    sbarMain.SetText(kPathPanel, L"");
    SetCurrentFile(L"");
    cxProgressBar.SetPosition(0);
    AddStatusLine(MainTexts::Started(Now()));
    startTime = GetTickCount();
    const TEngineCall call(*this);
    dataModule_->StartCopy(order);
    UpdateActions();
    PaintNow();
}

void TfmMain::acStopCopyExecute() {
    acShutDown.SetChecked(false);
    acShutDown.SetImage(TImageIndex::ShutDown);
    SetCurrentFile(L"");
    dataModule_->StopCopy();
    // Answered at once, also when what is under way takes some seconds to end.
    UpdateActions();
    ShowChanges();
    EndOfRun();
    AddStatusLine(MainTexts::StoppedByUser(Now()));
    ShowChanges();
}

void TfmMain::EndOfRun() {
    const TEngineCall call(*this);
    dataModule_->EndScanTask();
    const double minutes = (GetTickCount() - startTime) / 60000.0;
    const bool onlyChecks = dataModule_->OnlyChecks() && !dataModule_->IsReindexing();
    if (!dataModule_->IsReindexing()) {
        AddFailureLines(dataModule_->Failures(), onlyChecks);
    }
    AddStatusLine(onlyChecks ? CheckTimeText(minutes, DecimalSeparator())
                             : TimeTakenText(minutes, DecimalSeparator()));
    AddStatusLine(MainTexts::Finished(Now()));
    sbarMain.SetText(kProgressPanel, L"");
    dataModule_->SaveNasData();
    dataModule_->CloseRun();
    UpdateActions();
}

void TfmMain::AddFailureLines(const TRunFailures& failures, bool onlyChecks) {
    if (failures.Sum() != 0) {
        AddStatusLine(FailuresText(failures.files, failures.folders, failures.others, onlyChecks),
                      kErrorStatus);
    }
    if (failures.badCopies != 0) {
        AddStatusLine(BadCopiesText(failures.badCopies), kErrorStatus);
    }
    if (failures.Sum() + failures.badCopies != 0) {
        failureUnseen_ = GetForegroundWindow() != Handle();
    }
}

void TfmMain::DrawAttention() {
    if (GetForegroundWindow() == Handle()) {
        return;
    }
    FLASHWINFO flash{};
    flash.cbSize = sizeof(flash);
    flash.hwnd = Handle();
    flash.dwFlags = FLASHW_TRAY;
    flash.uCount = 1;
    FlashWindowEx(&flash);
}

void TfmMain::DoNasFinishMsg() {
    EndOfRun();
    DrawAttention();
    if (acShutDown.Checked()) {
        if (ShutdownSystem(calls_, L"", MainTexts::ShutDownMessage, kShutDownDelay, true, false)) {
            // Unless it is taken back, and the session ended later by somebody else.
            shutdownUntil_ = GetTickCount64() + (kShutDownDelay + kShutDownTakes) * 1000ULL;
        }
    } else if (CloseAfterCopy) {
        RequestClose();
    }
}

void TfmMain::acConfigCopyExecute() {
    if (dataModule_->IsReindexing()) {
        return;
    }
    companions_->ShowConfiguration(Handle());
}

void TfmMain::acShutDownExecute() {
    acShutDown.SetChecked(!acShutDown.Checked());
    acShutDown.SetImage(acShutDown.Checked() ? TImageIndex::ShutDownChecked : TImageIndex::ShutDown);
}

void TfmMain::acReindexExecute() {
    if (closing_ || dataModule_->IsReindexing()) {
        return;
    }
    // The question has a message loop of its own: an unattended run may begin while it is open. It stands
    // above the configuration window, which is always on top.
    if (!AskYesNo(Handle(), MainTexts::Program, kReindexQuestion) || closing_ || !CopyIdle) {
        return;
    }
    // Reindexing walks the rows with the cursor that the configuration window edits them with.
    if (companions_ != nullptr && !companions_->CloseConfiguration()) {
        return;
    }
    // Closing may have asked something, too.
    if (closing_ || !dataModule_->BeginReindex()) {
        return;
    }
    startTime = GetTickCount();
    UpdateActions();
    ProcessPendingMessages();
    AddStatusLine(MainTexts::Started(Now()));
    // All rows, and afterwards the cursor stands where it stood: a run reads "History" there.
    const std::size_t row = dataModule_->MemData.RowNumber();
    dataModule_->MemData.First();
    RunGuarded([this] { dataModule_->ReIndexNasData(); });
    dataModule_->MemData.MoveTo(row);
    AddStatusLine(MainTexts::ReindexEnded(Now()));
    dataModule_->EndReindex();
    UpdateActions();
}

void TfmMain::acUpdateExecute() {
    companions_->CheckForUpdate(false, nullptr);
}

void TfmMain::acRunLogExecute() {
    const std::wstring folder = dataModule_ != nullptr ? dataModule_->ConfigurationFolder() : L"";
    const std::wstring path = NewestRunLog(calls_, folder);
    if (path.empty()) {
        AddStatusLine(kNoRunLogText);
    } else if (!OpenByShell(path.c_str(), nullptr)) {
        const std::wstring reason = SystemErrorText(GetLastError());
        AddStatusLine(RunLogNotOpenedText(path), kErrorStatus, reason);
    }
}

bool TfmMain::OpenByShell(const wchar_t* file, const wchar_t* parameters) {
    const HINSTANCE answer =
        calls_.ShellExecuteW(Handle(), L"open", file, parameters, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(answer) > kLastShellError;
}

void TfmMain::SelectError(bool below) {
    if (cxGridTv.SelectError(below)) {
        SetFocus(cxGridTv.Handle());
    }
}

std::wstring TfmMain::CurrentPath() const {
    const std::optional<std::size_t> row = cxGridTv.CurrentRow();
    const std::wstring text = row ? rows_.Text(*row) : std::wstring();
    return IsPathRow(text) ? text : std::wstring();
}

void TfmMain::ShowInFolder(const std::wstring& path) {
    if (path.empty()) {
        return;
    }
    // Of a file that is not there the Explorer would show something else.
    if (!FileExists(calls_, path)) {
        AddStatusLine(MainTexts::NotFound(path));
    } else if (!OpenByShell(L"explorer.exe", (L"/select,\"" + path + L"\"").c_str())) {
        const std::wstring reason = SystemErrorText(GetLastError());
        AddStatusLine(MainTexts::NotShown(path), kErrorStatus, reason);
    }
}

void TfmMain::TimerTimer() {
    if (dataModule_->IsReindexing()) {
        // The run begins when that is done.
        return;
    }
    Timer.SetEnabled(false);
    // Nobody may be there: settings that cannot be saved hold up nothing.
    static_cast<void>(companions_->CloseConfigurationForRun());
    StartRun({.copy = commandLine_.copy, .check = commandLine_.check});
}

void TfmMain::UpdateTimerTimer() {
    UpdateTimer.SetEnabled(false);
    if (companions_ == nullptr || closing_) {
        return;
    }
    ShowWaitCursor(true);
    companions_->CheckForUpdate(true, [this] {
        ShowWaitCursor(false);
        if (companions_->NewUpdateExists() && !closing_) {
            companions_->CheckForUpdate(false, nullptr);
        }
    });
}

void TfmMain::KeepAwake() {
    const bool atWork = dataModule_ != nullptr && dataModule_->IsAtWork();
    if (std::exchange(keepsAwake_, atWork) != atWork) {
        calls_.SetThreadExecutionState(atWork ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
        if (atWork) {
            calls_.ShutdownBlockReasonCreate(Handle(), kRunIsOnText);
        } else {
            calls_.ShutdownBlockReasonDestroy(Handle());
        }
        menuTimer_.SetEnabled(atWork);
    }
}

// An open menu, and moving the window by keys, are loops of the system: opened while a report processed
// messages, they hold up the copying further up the stack until somebody ends them.
void TfmMain::EndForgottenMenu() {
    GUITHREADINFO thread{};
    thread.cbSize = sizeof(thread);
    LASTINPUTINFO input{sizeof(input), 0};
    constexpr DWORD kSystemLoops = GUI_INMENUMODE | GUI_POPUPMENUMODE | GUI_SYSTEMMENUMODE | GUI_INMOVESIZE;
    if (GetGUIThreadInfo(GetCurrentThreadId(), &thread) && (thread.flags & kSystemLoops) != 0 &&
        GetLastInputInfo(&input) && GetTickCount() - input.dwTime > kForgottenAfter) {
        EndMenu();
        SendMessageW(Handle(), WM_CANCELMODE, 0, 0);
    }
}

std::array<TAction*, 13> TfmMain::Actions() {
    return {&acClose,  &acStartCopy, &acStopCopy,  &acConfigCopy,    &acShutDown, &acReindex, &acUpdate,
            &acVerify, &acRunLog,    &acNextError, &acPreviousError, &acShowFile, &acShowCopy};
}

void TfmMain::UpdateActions() {
    KeepAwake();
    for (TAction* action : Actions()) {
        action->Update();
    }
}

// Reports.

void TfmMain::AddStatusLine(const std::wstring& text, std::optional<int> status, const std::wstring& reason) {
    rows_.InsertAtTop(text, status, reason);
}

void TfmMain::SetMessage(const std::wstring& text, TMessagePos kind, const std::wstring& reason) {
    if (!Exists()) {
        return;
    }
    switch (kind) {
        case TMessagePos::Memo:
            AddStatusLine(text, kFileNameStatus, reason);
            break;
        case TMessagePos::Status:
            sbarMain.SetText(kPathPanel, text);
            break;
        case TMessagePos::Bytes:
            sbarMain.SetText(kBytesPanel, text);
            break;
        case TMessagePos::Error:
            AddStatusLine(text, kErrorStatus, reason);
            break;
        case TMessagePos::FileMsg:
            // The file at hand when the user stopped leaves the field empty.
            SetCurrentFile(dataModule_->State() == TRunState::Stopping ? L"" : text);
            cxProgressBar.SetPosition(0);
            break;
        case TMessagePos::Ignore:
            AddStatusLine(text, kIgnoreStatus);
            break;
        case TMessagePos::ThreadMsg:
            SetCurrentFile(text);
            break;
        default:
            return;
    }
    AfterReport();
}

void TfmMain::ReportUnexpectedError(const std::wstring& text) {
    unexpectedErrors_ = true;
    AddStatusLine(text, kErrorStatus);
    PostMessageW(Handle(), kRunBrokenMessage, 0, 0);
}

// Where the mistake has left the run nobody knows; it would perhaps never end by itself.
void TfmMain::RunBroken() {
    if (dataModule_->IsReindexing()) {
        return;
    }
    if (!CopyIdle) {
        acStopCopyExecute();
    }
    if (CloseAfterCopy && dataModule_->HasRun() && !closing_) {
        RequestClose();
    }
}

void TfmMain::ProgressMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) {
    const auto value =
        static_cast<double>((static_cast<std::uint64_t>(static_cast<std::uint32_t>(longParameter)) << 32) |
                            static_cast<std::uint32_t>(wordParameter));
    switch (message) {
        case kProgressResetMessage:
            cxProgressBar.SetPosition(0);
            break;
        case kProgressPositionMessage:
            cxProgressBar.SetPosition(value);
            break;
        default:
            cxProgressBar.SetMaximum(value);
            break;
    }
    AfterReport();
}

void TfmMain::AfterReport() {
    if (!showTimer_.Enabled()) {
        showTimer_.SetEnabled(true);
    }
    if (engineCalls_ > 0) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (throttle_.InputDue(now)) {
        ProcessPendingInput();
        throttle_.InputDone(std::chrono::steady_clock::now());
    }
    if (throttle_.PaintDue(now)) {
        PaintNow();
    }
}

void TfmMain::PaintNow() {
    const auto begin = std::chrono::steady_clock::now();
    if (!throttle_.PaintDue(begin)) {
        return;
    }
    ShowChanges();
    // The other windows of the program, too: during a copy nobody else asks for their paint messages.
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            if (IsWindowVisible(window)) {
                RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
            }
            return TRUE;
        },
        0);
    throttle_.PaintDone(begin, std::chrono::steady_clock::now());
}

void TfmMain::SetCurrentFile(const std::wstring& text) {
    if (currentFile_ != text) {
        currentFile_ = text;
        currentFileChanged_ = true;
    }
}

void TfmMain::ShowChanges() {
    showTimer_.SetEnabled(false);
    if (!Exists()) {
        return;
    }
    cxGridTv.ShowChanges();
    sbarMain.ShowChanges();
    cxProgressBar.ShowChanges();
    if (currentFileChanged_) {
        currentFileChanged_ = false;
        SetWindowTextW(dxBarStatic2_, currentFile_.c_str());
    }
    if (CopyIdle) {
        // A full bar would stay on the button for as long as the window is open.
        failureUnseen_ ? taskbarProgress_.ShowError() : taskbarProgress_.Hide();
    } else if (dataModule_ != nullptr && dataModule_->State() == TRunState::Unreachable) {
        taskbarProgress_.ShowError();  // nothing goes on until the user stops it
    } else if (cxProgressBar.Position() > 0) {
        taskbarProgress_.Show(cxProgressBar.Position(), cxProgressBar.Maximum());
    } else {
        // Files are compared, or small ones copied.
        taskbarProgress_.ShowPulse();
    }
}

void TfmMain::ApplicationIdle() {
    UpdateActions();
    ShowChanges();
}

// The end.

void TfmMain::RequestClose() {
    closing_ = true;
    if (!CopyIdle) {
        acStopCopyExecute();
    }
    CloseWhenPossible();
}

// Unlike the user's close box this stops nothing: neither a run nor one that is about to begin.
TEndAnswer TfmMain::EndRequested() {
    if (!CopyIdle || EngineIsOnStack() || Timer.Enabled()) {
        return TEndAnswer::Busy;
    }
    // Whoever asks gets his answer before a question that closing may ask.
    ReplyMessage(static_cast<LRESULT>(TEndAnswer::Ending));
    acCloseExecute();
    return TEndAnswer::Ending;
}

// Whether the tables are in use further up: this is a message that a report or a wait has let in.
bool TfmMain::EngineIsOnStack() const {
    return engineCalls_ > 0 ||
           (dataModule_ != nullptr && (dataModule_->IsReindexing() || dataModule_->InCopyPass()));
}

void TfmMain::CloseWhenPossible() {
    if (!Exists()) {
        return;
    }
    if (EngineIsOnStack()) {
        closeTimer_.SetEnabled(true);
        return;
    }
    closeTimer_.SetEnabled(false);
    EndMenu();
    if (companions_ != nullptr) {
        companions_->CloseAllNow();
    }
    Destroy();
}

void TfmMain::EndDataModule() {
    if (dataModule_ != nullptr && !std::exchange(dataModuleEnded_, true)) {
        const TEngineCall call(*this);
        dataModule_->DataModuleDestroy();
    }
}

bool TfmMain::MayEndSession(bool critical) const {
    return critical || GetTickCount64() < shutdownUntil_ || dataModule_ == nullptr ||
           !dataModule_->IsAtWork();
}

// The process may be ended as soon as this returns, or when it takes longer than some seconds: what can be
// lost is saved first, and what is on the NAS after what is on this computer. While a mistake of the start is
// being told there is only the window.
void TfmMain::SessionEnds() {
    closing_ = true;
    // The tables are saved whatever becomes of the windows.
    if (companions_ != nullptr) {
        RunGuarded([this] { companions_->CloseAllNow(); });
    }
    if (dataModule_ == nullptr) {
        return CloseWhenPossible();
    }
    if (!dataModuleEnded_) {
        const TEngineCall call(*this);
        dataModule_->SaveSourceFolderTable();
        dataModule_->SaveNasData();
    }
    if (!CopyIdle) {
        acStopCopyExecute();
    }
    // What is on the stack must not find its tables closed, but they are saved now.
    if (EngineIsOnStack()) {
        const TEngineCall call(*this);
        dataModule_->SaveNasData();
        dataModule_->SaveSourceFolderTable();
    } else {
        EndDataModule();
    }
    CloseWhenPossible();
}
