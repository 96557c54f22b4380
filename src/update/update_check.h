// The update check: asks the maker's web server for a newer version and fetches it.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "support/file_access.h"
#include "support/platform_calls.h"
#include "support/text.h"
#include "support/version.h"
#include "ui/action.h"
#include "ui/question_box.h"
#include "update/downloader.h"
#include "update/http_client.h"
#include "update/update_information.h"
#include "update/update_window.h"

// The update window with its search and its download. Nothing here waits on the window's thread: neither for
// a server nor, in a message loop of its own, for the user; so a copy that is running goes on.
class TfmUpdateCheck {
public:
    struct TOptions {
        // The maker's web server: host, optionally with :port and a path before /info/vardeko.info.
        std::wstring server;
        // Where the fetched files lie; created when it is missing. Empty when there is no such place.
        std::wstring dataFolder;
        int build = ProgramBuild();                       // this program's own; a higher one is newer
        std::wstring versionText = ProgramVersionText();  // as the server is told
        THttpPatience patience{std::chrono::seconds(15),
                               std::chrono::seconds(60)};  // for the information file
        THttpPatience downLoadPatience = TclDownLoader::kPatience;
    };

    // The program's own server and the folder "Vardeko" in the user's local data.
    static TOptions ProgramOptions();

    // `owner`: answers the window that the update window belongs to. `endProgram` is called when the setup
    // has started and must return before the program ends.
    TfmUpdateCheck(const TPlatformCalls& calls, const TCodePage& codePage, TOptions options,
                   std::function<HWND()> owner, std::function<void()> endProgram);
    TfmUpdateCheck(const TfmUpdateCheck&) = delete;
    TfmUpdateCheck& operator=(const TfmUpdateCheck&) = delete;
    ~TfmUpdateCheck();

    // Silent: searches without showing the window. Otherwise shows the window; the user searches. Returns at
    // once. `finished` is called once on this thread, when the search has ended or the window has been
    // closed; it is not called after CloseNow.
    void ShowEx(bool silent, std::function<void()> finished = nullptr);

    // Whether the last search found a newer version.
    bool NewUpdateExist() const { return newUpdateExist_; }

    // Ends the search and the download, and puts the window away, all at once: the program ends.
    void CloseNow();

    // The update window; null while it is not shown.
    HWND Handle() const { return window_.Handle(); }

    TAction acSearchForUpdates;
    TAction acDownload;

private:
    void acSearchForUpdatesExecute();
    void acDownloadExecute();
    void btnCancelClick();

    std::wstring InformationFile() const;
    void HttpFinished(const THttpReply& reply);
    TErrorCode SaveInformation(std::string_view bytes);
    void ReadInformation();
    void TellNoUpdate();
    void TellNewVersion();
    void DownLoadFinished(const TDownLoadResult& result);
    void AskForSetup();
    bool StartSetup();
    void OpenPage(const std::wstring& address);

    void Tell(const std::wstring& title, const std::wstring& text, std::function<void()> then);
    void AddLog(const std::wstring& line);
    void SetLog(const std::wstring& text);
    void SetLabel(const std::wstring& text);
    void UpdateActions();
    void Close();

    const TPlatformCalls& calls_;
    const TCodePage& codePage_;
    TOptions options_;
    std::function<HWND()> owner_;
    std::function<void()> endProgram_;
    std::function<void()> searchFinished_;  // of the silent check that is under way
    std::function<void()> windowClosed_;

    TUpdateInformation information_;
    bool newUpdateExist_ = false;
    std::wstring localFile_;  // where a download is stored
    bool isLoading_ = false;  // a download is running
    bool isClosing_ = false;  // the download is being stopped because the window shall close
    std::wstring log_;
    std::wstring label_;

    TUpdateWindow window_;
    TQuestionBox question_;
    TipwHTTP http_;
    TclDownLoader downLoader_;
};
