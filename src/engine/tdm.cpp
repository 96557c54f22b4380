#include "engine/tdm.h"

#include <chrono>
#include <future>
#include <system_error>
#include <utility>

#include "engine/file_size_text.h"
#include "engine/reindex.h"
#include "engine/scan_folders.h"
#include "hashdb/destination_folder.h"
#include "store/seen_tables.h"
#include "store/settings.h"
#include "store/source_folder_file.h"
#include "support/path_hash.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "support/system_helpers.h"
#include "support/user_locale.h"
#include "texts/problem_text.h"

namespace {

constexpr UINT kCopyTimerInterval = 1000;  // milliseconds
constexpr std::chrono::milliseconds kPaintInterval{50};

// Lets windows repaint themselves while the window's thread waits; input stays in the queue.
void PaintWhileWaiting() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // Comes whatever is asked for; the message loop needs it.
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}

}  // namespace

TDM::TDM(const TPlatformCalls& calls)
    : calls_(calls),
      shareLogon_(std::make_shared<TShareLogon>(calls)),
      taskWakeUp_([this] { OmniEventMonitor.Deliver(); }),
      OmniEventMonitor([this] { taskWakeUp_.Post(); }),
      CopyTimer(kCopyTimerInterval, [this] { CopyTimerTimer(); }) {
    OmniEventMonitor.OnTaskMessage = [this](IOmniTask& task, TTaskMessage& message) {
        OmniEventMonitorTaskMessage(task, message);
    };
    OmniEventMonitor.OnTaskTerminated = [this](IOmniTask& task) { OmniEventMonitorTaskTerminated(task); };
}

// The run ends its tasks before what they report to goes.
TDM::~TDM() = default;

void TDM::DataModuleCreate() {
    hostName_ = HostName();
    configurationFolder_ = ::ConfigurationFolder(calls_);
    CreateHashContext();
    sourceFolderFileMissing_ = !LoadSourceFolders(calls_, SourceFolderFile(), MemData);
    MemData.SetModified(false);
    sourceFoldersLoaded_ = true;
}

void TDM::DataModuleDestroy() {
    SaveSourceFolderTable();
    CloseRun();
    MemData.Close();
    NasData.Close();
    if (UseConnect) {
        Res = shareLogon_->Cancel();
        if (Res != 0) {
            Report(SystemErrorText(Res), TMessagePos::Memo);
        }
    }
}

void TDM::SaveSourceFolderTable() {
    // Rows that did not change are not written: another copy of the program may have written newer ones, also
    // where there was no file when this one began.
    const bool mustBeMade = sourceFolderFileMissing_ && !FileExists(calls_, SourceFolderFile());
    if (sourceFoldersLoaded_ && (MemData.Modified() || mustBeMade)) {
        if (const TErrorCode error = SaveSourceFolders(calls_, SourceFolderFile(), MemData)) {
            ReportFailure({.what = TProblemKind::FileNotSaved, .path = SourceFolderFile(), .code = error});
        }
    }
}

void TDM::Report(const std::wstring& text, TMessagePos kind, const std::wstring& reason) {
    if (SetMessage) {
        SetMessage(*this, text, kind, reason);
    }
}

void TDM::ReportFailure(const TProblem& problem) {
    if (const std::shared_ptr<TCopyRun> run = run_) {
        return run->ReportFailure(problem);
    }
    ++failures_;
    Report(ProblemText(problem, &SystemErrorText), TMessagePos::Error);
}

void TDM::LoadRunSettings() {
    TSettings settings = LoadSettings(calls_, IniFile());
    NAS = settings.DestinationRoot();
    UseConnect = settings.CONNECT.value;
    fetchCloudFiles_ = settings.CLOUD;
    parallel_ = settings.PARALLEL;
    AUser = std::move(settings.USER.value);
    APass = std::move(settings.PASS.value);
}

void TDM::StartCopy(const TRunOrder& order) {
    // Whoever starts anew without ending the old run has it ended here.
    StopCopy();
    if (!machine_.Start()) {
        return;
    }
    failures_ = 0;
    run_ = std::make_shared<TCopyRun>(
        TRunSurroundings{.calls = calls_,
                         .hostName = hostName_,
                         .configurationFolder = configurationFolder_,
                         .memData = MemData,
                         .nasData = NasData,
                         .nasDataFile = nasDataFile_,
                         .shareLogon = shareLogon_,
                         .monitor = OmniEventMonitor,
                         .report = [this](const std::wstring& text, TMessagePos kind,
                                          const std::wstring& reason) { Report(text, kind, reason); },
                         .whileWaiting =
                             [this] {
                                 if (WhileWaiting) {
                                     WhileWaiting(*this);
                                 }
                             },
                         .progressWindow = myHandle,
                         .unattended = unattended_});
    try {
        LoadRunSettings();
        run_->Prepare({.nas = NAS,
                       .useConnect = UseConnect,
                       .user = std::move(AUser),
                       .password = std::move(APass),
                       .fetchCloudFiles = fetchCloudFiles_,
                       .parallel = parallel_,
                       .order = order});
    } catch (const std::exception& error) {
        // Nothing is scanned: the next tick finds the run ended.
        run_->ReportFailure(ProblemOf(error));
        machine_.Prepared();
    }
    CopyTimer.SetEnabled(true);
}

// The task that prepares has ended.
void TDM::RunIsPrepared() {
    if (State() != TRunState::Preparing) {
        return;
    }
    const std::shared_ptr<TCopyRun> run = run_;
    const bool isReached = run->BeginScan();
    if (run != run_) {
        return;  // a report has let in the start of another one
    }
    if (isReached) {
        machine_.Prepared();
    } else {
        machine_.NotReached();
        CopyTimer.SetEnabled(false);
    }
}

void TDM::StopCopy() {
    if (!CopyIdle && run_ && !IsReindexing()) {
        run_->Stop();
        CopyTimer.SetEnabled(false);
    }
    machine_.Stop(inPass_);
}

void TDM::EndScanTask() {
    if (run_) {
        run_->EndTasks(&PaintWhileWaiting);
    }
    // What the tasks still sent belongs to this run, not to the next one.
    OmniEventMonitor.Deliver();
}

void TDM::SaveNasData() {
    if (run_ && run_->Order().ChangesNothing() && !IsReindexing()) {
        return;
    }
    const TErrorCode error = nasDataFile_.Save(
        calls_, [this](std::function<TErrorCode()> work) { return OnTableThread(std::move(work)); });
    if (error != ERROR_SUCCESS) {
        return ReportFailure(
            {.what = TProblemKind::FileNotSaved, .path = nasDataFile_.Path(), .code = error});
    }
    if (nasDataFile_.IsCurrent()) {
        RememberTable(calls_, configurationFolder_, nasDataFile_.Path(), NasData.RecordCount());
    }
}

// The table lies on the NAS, which may take its time.
TErrorCode TDM::OnTableThread(std::function<TErrorCode()> work) {
    const auto task = std::make_shared<std::packaged_task<TErrorCode()>>(std::move(work));
    std::future<TErrorCode> result = task->get_future();
    try {
        tableThread_.Add([task] { (*task)(); });
    } catch (const std::system_error&) {
        (*task)();  // without a thread
    }
    while (result.wait_for(kPaintInterval) != std::future_status::ready) {
        PaintWhileWaiting();
    }
    return result.get();
}

void TDM::CloseRun() {
    if (run_ && !inPass_) {
        run_->Close(static_cast<int>(ExitCode()));
    }
}

TRunFailures TDM::Failures() const {
    TRunFailures failures = run_ ? run_->Failures() : TRunFailures();
    failures.others += failures_;
    return failures;
}

std::wstring TDM::PathOfCopy(std::wstring_view source) const {
    return DestinationFolder(NAS, hostName_, source) + std::wstring(FileNamePart(source));
}

TExitCode TDM::ExitCode() const {
    const TRunFailures failures = Failures();
    return ExitCodeOf(machine_.Outcome(), failures.Sum(), run_ ? run_->MissingFolders() : 0,
                      failures.badCopies);
}

void TDM::ReIndexNasData() {
    try {
        LoadRunSettings();
    } catch (const std::exception& error) {
        return ReportFailure(ProblemOf(error));
    }
    // The settings are those of a run, but nothing is logged on to here: what is kept of them is wiped again.
    AUser = {};
    APass = {};
    const TDestination destination = Destination();
    if (NAS.empty() || !FolderExists(calls_, destination.HostFolder())) {
        const TProblem problem{.what = TProblemKind::DestinationMissing, .path = NAS};
        return Report(ProblemText(problem, &SystemErrorText), TMessagePos::Memo);
    }
    const auto claim = TDestinationClaim::Take(destination);
    if (!claim) {
        return ReportFailure({.what = TProblemKind::DestinationTaken, .path = NAS});
    }
    NasData.ClearIndex();
    NasData.Open();
    // From here on what was made may be saved at any time, also when the session ends in the middle.
    nasDataFile_.Rebuilt(destination.TableFile());
    try {
        ReindexSourceFolders(
            calls_, MemData, NasData, NAS, hostName_,
            {.folderFound = [this](const std::wstring& folder) { Report(folder, TMessagePos::Status); },
             .folderBegun = [this](const std::wstring& folder) { Report(folder, TMessagePos::Memo); },
             .fileIndexed = [this](const std::wstring& name) { Report(name, TMessagePos::FileMsg); },
             .stopRequested = [] { return CopyIdle; }});
    } catch (const std::exception& error) {
        ReportFailure(ProblemOf(error));
    }
    SaveNasData();
}

std::wstring TDM::FormatFileSize(double bytes) {
    return FileSizeText(bytes, DecimalSeparator());
}

void TDM::OmniEventMonitorTaskMessage(IOmniTask& task, TTaskMessage& message) {
    const auto identifier = static_cast<TScanMessage>(message.identifier);
    const auto* text = std::get_if<std::wstring>(&message.value);
    const auto* number = std::get_if<std::int64_t>(&message.value);
    if (text != nullptr && identifier == TScanMessage::StatusText) {
        Report(*text, TMessagePos::Status);
    } else if (text != nullptr && identifier == TScanMessage::MemoText) {
        Report(*text, TMessagePos::Memo);
    } else if (text != nullptr && identifier == TScanMessage::IgnoreText) {
        Report(*text, TMessagePos::Ignore);
    } else if (number != nullptr && identifier == TScanMessage::Number) {
        Report(std::to_wstring(*number), TMessagePos::ThreadMsg);
    } else if (const std::shared_ptr<TCopyRun> run = run_; run && run->Owns(task)) {
        run->TaskSent(message);
    }
}

void TDM::OmniEventMonitorTaskTerminated(IOmniTask& task) {
    if (const std::shared_ptr<TCopyRun> run = run_; run && run->TaskEnded(task)) {
        RunIsPrepared();
    }
}

void TDM::CopyPass(TCopyRun& run) {
    inPass_ = true;
    try {
        run.CopyFiles();
    } catch (...) {
        inPass_ = false;
        throw;
    }
    inPass_ = false;
}

void TDM::CopyTimerTimer() {
    if (InCopyPass()) {
        // A report of the pass further up the stack processes messages, and a new run was started there. The
        // timer stays on for it.
        return;
    }
    CopyTimer.SetEnabled(false);
    // Catches what a wake-up that the system refused has left lying.
    OmniEventMonitor.Deliver();
    const std::shared_ptr<TCopyRun> run = run_;
    if (State() == TRunState::Running) {
        CopyPass(*run);
    }
    if (run != run_) {
        // Stopped and followed by another one from within a report. That one reads the table when this one
        // lets go of it.
        SaveNasData();
        run->Close(static_cast<int>(TExitCode::NotAllCopied));
        if (machine_.FileDone()) {
            CloseRun();
        }
        return;
    }
    if (machine_.FileDone()) {
        // Stopped in mid-file: what was recorded after the stop saved the table is saved now.
        SaveNasData();
        CloseRun();
    } else if (CopyIdle) {
        return;
    } else if (State() == TRunState::Preparing || run->HasWork()) {
        // The last report may have brought in files, and with them the end of the task.
        CopyTimer.SetEnabled(true);
    } else if (run->BeginCheck()) {
        // A check may take hours: what was copied is on record before it.
        SaveNasData();
        CopyTimer.SetEnabled(true);
    } else if (machine_.Finish() && DoNasFinishMsg) {
        DoNasFinishMsg(*this);
    }
}
