#include "update/downloader.h"

#include <exception>
#include <utility>

#include "update/download_run.h"

TclDownLoader::TclDownLoader(const TPlatformCalls& calls, TEvents events, THttpPatience patience)
    : calls_(calls), events_(std::move(events)), patience_(patience), thread_([this] { TakeNews(); }) {}

void TclDownLoader::Start(const std::wstring& address, const std::wstring& localFile) {
    StopNow();
    progress_ = {};
    thread_.Start([this, address, localFile] {
        TDownLoadResult result;
        try {
            TDownLoadRun run(calls_, {kUserAgent, patience_, kLargestFile}, thread_.Cancelled(),
                             [this](const TDownLoadProgress& progress) { Report(progress); });
            result = run.Fetch(address, localFile);
        } catch (const std::exception&) {
            result.errorText = HttpErrorText(ERROR_NOT_ENOUGH_MEMORY);
        }
        {
            const std::lock_guard lock(mutex_);
            result_ = std::move(result);
        }
        thread_.Notify();
    });
    busy_ = true;
}

void TclDownLoader::StopNow() {
    thread_.Stop();
    busy_ = false;
    result_.reset();
}

void TclDownLoader::Report(const TDownLoadProgress& progress) {
    {
        const std::lock_guard lock(mutex_);
        progress_ = progress;
    }
    thread_.Notify();
}

void TclDownLoader::TakeNews() {
    if (!busy_) {
        return;
    }
    TDownLoadProgress progress;
    std::optional<TDownLoadResult> result;
    {
        const std::lock_guard lock(mutex_);
        progress = progress_;
        result = std::exchange(result_, std::nullopt);
    }
    if (events_.progress && progress.bytesTotal > 0) {
        events_.progress(progress);
    }
    if (result) {
        busy_ = false;
        events_.finished(*result);
    }
}
