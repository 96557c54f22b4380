// Fetches a file from a web server to the disk.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "support/platform_calls.h"
#include "update/http_exchange.h"
#include "update/transfer_thread.h"

// How a download ended.
enum class TDownLoadState {
    Finished,
    FinishedWithWarnings,  // complete, but the second part had to be fetched again
    Stopped,
    Failed,
};

struct TDownLoadResult {
    TDownLoadState state = TDownLoadState::Failed;
    std::wstring errorText;  // when it failed
};

struct TDownLoadProgress {
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
    double bytesPerSecond = 0;
};

// Fetches one file over HTTPS, in two parts at once when the server allows that and in one when it does not.
// The file appears under its name when it is complete; a broken or stopped download leaves nothing.
class TclDownLoader {
public:
    struct TEvents {
        // Both on the window's thread.
        std::function<void(const TDownLoadProgress&)> progress;
        std::function<void(const TDownLoadResult&)> finished;
    };

    // The browser identification under which a setup is fetched.
    static constexpr const wchar_t* kUserAgent = L"Mozilla/5.0 (compatible; Vardeko)";
    // Any size is fine that no setup will ever have; it only keeps a wrong length from filling the disk.
    static constexpr std::uint64_t kLargestFile = 1'073'741'824;
    // A download may take hours on a slow line, but not stand still.
    static constexpr THttpPatience kPatience{std::chrono::seconds(30), std::chrono::hours(12)};

    TclDownLoader(const TPlatformCalls& calls, TEvents events, THttpPatience patience = kPatience);

    // Starts to fetch the file; must not be called while IsBusy. `finished` runs once for each Start, unless
    // StopNow ended it.
    void Start(const std::wstring& address, const std::wstring& localFile);

    bool IsBusy() const { return busy_; }

    // Asks for the end; `finished` tells about it.
    void Cancel() { thread_.Cancel(); }

    // Ends the download at once, without another call of the events.
    void StopNow();

private:
    void Report(const TDownLoadProgress& progress);
    void TakeNews();

    const TPlatformCalls& calls_;
    TEvents events_;
    THttpPatience patience_;
    bool busy_ = false;
    std::mutex mutex_;
    TDownLoadProgress progress_;
    std::optional<TDownLoadResult> result_;  // from the thread, not yet taken
    TTransferThread thread_;                 // the last member: ends before what it uses
};
