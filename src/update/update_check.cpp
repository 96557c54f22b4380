#include "update/update_check.h"

#include <shlobj.h>

#include <utility>

#include "support/path_text.h"
#include "support/system_error.h"
#include "support/user_locale.h"
#include "texts/ui_texts.h"
#include "texts/update_texts.h"

namespace {

constexpr const wchar_t* kInformationPath = L"/info/vardeko.info";
// ERROR_ELEVATION_REQUIRED, which not every set of headers has.
constexpr DWORD kElevationRequired = 740;
constexpr std::size_t kLargestInformation = 65'536;  // bytes
constexpr std::size_t kYes = 0;                      // the first button of the question

std::wstring ErrorLine(int code, const std::wstring& description) {
    return std::to_wstring(code) + L" " + HarmlessText(description, kLargestShownText);
}

std::wstring ErrorLine(DWORD code) {
    return ErrorLine(static_cast<int>(code), SystemErrorText(code));
}

std::wstring LocalDataFolder() {
    wchar_t* path = nullptr;
    std::wstring folder;
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_CREATE, nullptr, &path))) {
        folder = path;
    }
    CoTaskMemFree(path);
    return folder;
}

}  // namespace

TfmUpdateCheck::TOptions TfmUpdateCheck::ProgramOptions() {
    TOptions options;
    options.server = FromUtf8Lossy(VARDEKO_UPDATE_SERVER);
    if (const std::wstring folder = LocalDataFolder(); !folder.empty()) {
        options.dataFolder = folder + L"\\Vardeko";
    }
    return options;
}

TfmUpdateCheck::TfmUpdateCheck(const TPlatformCalls& calls, const TCodePage& codePage, TOptions options,
                               std::function<HWND()> owner, std::function<void()> endProgram)
    : acSearchForUpdates({.caption = UpdateTexts::Search,
                          .enabledWhen = [this] { return !http_.IsBusy() && !isLoading_; },
                          .execute = [this] { acSearchForUpdatesExecute(); }}),
      acDownload({.caption = UpdateTexts::Update,
                  .enabledWhen = [this] { return newUpdateExist_ && !http_.IsBusy() && !isLoading_; },
                  .execute = [this] { acDownloadExecute(); }}),
      calls_(calls),
      codePage_(codePage),
      options_(std::move(options)),
      owner_(std::move(owner)),
      endProgram_(std::move(endProgram)),
      window_(acSearchForUpdates, acDownload, [this] { btnCancelClick(); }),
      http_({L"Vardeko " + options_.versionText + L" Update Agent", kLargestInformation, options_.patience},
            [this](const THttpReply& reply) { HttpFinished(reply); }),
      downLoader_(calls,
                  {[this](const TDownLoadProgress& progress) {
                       SetLabel(UpdateTexts::Transfer(progress.bytesDone, progress.bytesPerSecond,
                                                      DecimalSeparator(), ThousandSeparator()));
                   },
                   [this](const TDownLoadResult& result) { DownLoadFinished(result); }},
                  options_.downLoadPatience) {
    UpdateActions();
}

TfmUpdateCheck::~TfmUpdateCheck() {
    CloseNow();
}

void TfmUpdateCheck::ShowEx(bool silent, std::function<void()> finished) {
    if (silent) {
        searchFinished_ = std::move(finished);
        if (!http_.IsBusy()) {
            acSearchForUpdatesExecute();
        }
        return;
    }
    windowClosed_ = std::move(finished);
    if (window_.Exists()) {
        SetForegroundWindow(window_.Handle());
        return;
    }
    isClosing_ = false;
    if (!window_.ShowOver(owner_())) {
        Close();
        return;
    }
    window_.SetLog(log_);
    window_.SetLabel(label_);
}

void TfmUpdateCheck::CloseNow() {
    searchFinished_ = nullptr;
    windowClosed_ = nullptr;
    http_.Cancel();
    downLoader_.StopNow();
    isLoading_ = false;
    question_.CloseNow();
    window_.CloseNow();
}

// Search.

void TfmUpdateCheck::acSearchForUpdatesExecute() {
    SetLog({});
    SetLabel(UpdateTexts::Searching);
    information_ = {};
    newUpdateExist_ = false;
    // What an earlier search may have left must not pass for this one's answer.
    calls_.DeleteFileW(ExtendedPath(InformationFile()).c_str());
    http_.Get(L"https://" + options_.server + kInformationPath);
    UpdateActions();
}

std::wstring TfmUpdateCheck::InformationFile() const {
    return options_.dataFolder + L"\\VardekoUpdate.ini";
}

void TfmUpdateCheck::HttpFinished(const THttpReply& reply) {
    SetLabel({});
    if (reply.code != 0) {
        AddLog(ErrorLine(reply.code, reply.description));
    } else if (const TErrorCode error = SaveInformation(reply.body)) {
        AddLog(ErrorLine(error));
    } else {
        ReadInformation();
    }
    UpdateActions();
    if (const auto finished = std::exchange(searchFinished_, nullptr)) {
        finished();
    }
}

TErrorCode TfmUpdateCheck::SaveInformation(std::string_view bytes) {
    if (options_.dataFolder.empty() || !CreateFolders(calls_, options_.dataFolder)) {
        return ERROR_PATH_NOT_FOUND;
    }
    return ReplaceWholeFile(calls_, InformationFile(),
                            [bytes](const TByteSink& write) { return write(bytes); });
}

void TfmUpdateCheck::ReadInformation() {
    std::string bytes;
    const TErrorCode error = ReadWholeFile(calls_, InformationFile(), bytes);
    calls_.DeleteFileW(ExtendedPath(InformationFile()).c_str());
    if (error != ERROR_SUCCESS) {
        AddLog(ErrorLine(error));
        return;
    }
    information_ = ReadUpdateInformation(bytes, codePage_);
    newUpdateExist_ = information_.build > options_.build;
    if (newUpdateExist_) {
        TellNewVersion();
    } else {
        TellNoUpdate();
    }
}

void TfmUpdateCheck::TellNoUpdate() {
    AddLog(UpdateTexts::NoUpdate);
    if (!information_.newsUrl.empty() && information_.exDelay == 0) {
        OpenPage(information_.newsUrl);
    }
}

void TfmUpdateCheck::TellNewVersion() {
    AddLog(UpdateTexts::NewerVersion + information_.version);
    AddLog(information_.updateMessage);
    AddLog({});
    AddLog(UpdateTexts::HowToUpdate);
}

// Update.

void TfmUpdateCheck::acDownloadExecute() {
    if (!information_.homepageUrl.empty()) {
        OpenPage(information_.homepageUrl);
        return;
    }
    if (isLoading_) {
        return;
    }
    if (!MayFetchSetup(information_.downLoadUrl) || !IsSafeSetupFileName(information_.setupFileName)) {
        Tell(UpdateTexts::Error, UpdateTexts::BadInformation, nullptr);
        return;
    }
    localFile_ = options_.dataFolder + L"\\" + information_.setupFileName;
    downLoader_.Start(information_.downLoadUrl, localFile_);
    isLoading_ = true;
    UpdateActions();
}

void TfmUpdateCheck::DownLoadFinished(const TDownLoadResult& result) {
    isLoading_ = false;
    UpdateActions();
    switch (result.state) {
        case TDownLoadState::Finished:
        case TDownLoadState::FinishedWithWarnings:
            if (isClosing_) {
                // Cancelled at the very moment at which it was done.
                calls_.DeleteFileW(ExtendedPath(localFile_).c_str());
                window_.FadeOut([this] { Close(); });
            } else if (result.state == TDownLoadState::Finished) {
                AskForSetup();
            } else {
                Tell(UpdateTexts::Message, UpdateTexts::FinishedWithWarnings, [this] { AskForSetup(); });
            }
            break;
        case TDownLoadState::Stopped:
        case TDownLoadState::Failed: {
            const bool isStopped = result.state == TDownLoadState::Stopped;
            SetLabel({});
            Tell(isStopped ? UpdateTexts::Message : UpdateTexts::Error,
                 isStopped ? UpdateTexts::Stopped : result.errorText, [this] {
                     if (isClosing_) {
                         window_.FadeOut([this] { Close(); });
                     }
                 });
            break;
        }
    }
}

void TfmUpdateCheck::AskForSetup() {
    question_.Ask(window_.Handle(), UpdateTexts::Confirmation, UpdateTexts::UpdateQuestion,
                  {UiTexts::Yes, UiTexts::No}, [this](std::size_t button) {
                      bool isStarted = false;
                      if (button == kYes) {
                          information_.exDelay = 0;
                          isStarted = StartSetup();
                      }
                      Close();
                      if (isStarted) {
                          endProgram_();
                      }
                  });
}

bool TfmUpdateCheck::StartSetup() {
    // The program's name is given apart, so that a blank in the path cannot make another one start.
    std::wstring commandLine = L"\"" + localFile_ + L"\" ";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION process{};
    if (calls_.CreateProcessW(localFile_.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                              CREATE_NEW_CONSOLE | NORMAL_PRIORITY_CLASS, nullptr,
                              options_.dataFolder.c_str(), &startup, &process)) {
        calls_.CloseHandle(process.hThread);
        calls_.CloseHandle(process.hProcess);
        return true;
    }
    // A setup that wants an administrator's rights can only be started by the shell, which asks for them.
    return GetLastError() == kElevationRequired && reinterpret_cast<INT_PTR>(calls_.ShellExecuteW(
                                                       window_.Handle(), L"open", localFile_.c_str(), nullptr,
                                                       options_.dataFolder.c_str(), SW_SHOWNORMAL)) > 32;
}

void TfmUpdateCheck::OpenPage(const std::wstring& address) {
    if (!MayOpenPage(address)) {
        AddLog(UpdateTexts::BadPage);
        return;
    }
    calls_.ShellExecuteW(window_.Handle(), L"open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

// Window.

void TfmUpdateCheck::btnCancelClick() {
    if (isLoading_) {
        isClosing_ = true;
        downLoader_.Cancel();
        return;
    }
    if (searchFinished_ == nullptr) {
        http_.Cancel();  // unless it is the silent check's, whose end somebody waits for
    }
    UpdateActions();
    window_.FadeOut([this] { Close(); });
}

void TfmUpdateCheck::Close() {
    window_.CloseNow();
    if (const auto closed = std::exchange(windowClosed_, nullptr)) {
        closed();
    }
}

void TfmUpdateCheck::Tell(const std::wstring& title, const std::wstring& text, std::function<void()> then) {
    question_.Ask(window_.Handle(), title, text, {UpdateTexts::Ok}, [then = std::move(then)](std::size_t) {
        if (then) {
            then();
        }
    });
}

void TfmUpdateCheck::AddLog(const std::wstring& line) {
    SetLog(log_ + line + L"\r\n");
}

void TfmUpdateCheck::SetLog(const std::wstring& text) {
    log_ = text;
    if (window_.Exists()) {
        window_.SetLog(log_);
    }
}

void TfmUpdateCheck::SetLabel(const std::wstring& text) {
    label_ = text;
    if (window_.Exists()) {
        window_.SetLabel(label_);
    }
}

void TfmUpdateCheck::UpdateActions() {
    acSearchForUpdates.Update();
    acDownload.Update();
}
