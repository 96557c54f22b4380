#include "update/download_run.h"

#include <winhttp.h>

#include <algorithm>
#include <array>
#include <exception>
#include <thread>
#include <utility>

#include "support/handles.h"
#include "update/update_information.h"

namespace {

constexpr int kStatusOk = 200;
constexpr int kStatusPartialContent = 206;
// Two connections do not pay for less.
constexpr std::uint64_t kSmallestToSplit = 16 * THttpExchange::kBlockSize;
constexpr std::chrono::milliseconds kReportInterval{100};

TDownLoadResult Failed(int code, const std::wstring& text) {
    return {TDownLoadState::Failed, std::to_wstring(code) + L" " + HarmlessText(text, kLargestShownText)};
}

}  // namespace

TDownLoadRun::TDownLoadRun(const TPlatformCalls& calls, TOptions options, HANDLE cancelled, TReport report)
    : calls_(calls), options_(std::move(options)), cancelled_(cancelled), report_(std::move(report)) {}

TDownLoadResult TDownLoadRun::Fetch(const std::wstring& address, const std::wstring& localFile) {
    begin_ = lastReport_ = std::chrono::steady_clock::now();
    THttpExchange exchange(options_.userAgent, options_.patience, cancelled_);
    THttpError error = exchange.Open(address);
    if (error == ERROR_SUCCESS) {
        if (const int status = exchange.Status(); status != kStatusOk) {
            return Failed(status, exchange.StatusText());
        }
        // Without a length nobody could tell a complete file from one that was cut.
        total_ = exchange.ContentLength().value_or(0);
        if (total_ == 0 || total_ > options_.largestFile) {
            return Failed(ERROR_WINHTTP_INVALID_SERVER_RESPONSE,
                          HttpErrorText(ERROR_WINHTTP_INVALID_SERVER_RESPONSE));
        }
        identity_ = IdentityOf(exchange);
        TPartFile file(calls_, localFile);
        error = file.Open();
        if (error == ERROR_SUCCESS) {
            error = FetchParts(exchange, address, file);
        }
        if (error == ERROR_SUCCESS) {
            error = file.Complete(total_, cancelled_);
        }
    }
    if (error == ERROR_WINHTTP_OPERATION_CANCELLED) {
        return {TDownLoadState::Stopped, {}};
    }
    if (error != ERROR_SUCCESS) {
        return Failed(static_cast<int>(error), HttpErrorText(error));
    }
    return {hasWarnings_ ? TDownLoadState::FinishedWithWarnings : TDownLoadState::Finished, {}};
}

THttpError TDownLoadRun::FetchParts(THttpExchange& exchange, const std::wstring& address, TPartFile& file) {
    const bool isSplit = total_ >= kSmallestToSplit && exchange.Header(L"Accept-Ranges") == L"bytes";
    middle_ = isSplit ? total_ / 2 : total_;
    const TKernelHandle stopped(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const TKernelHandle ended(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    TSecondPart secondPart = TSecondPart::None;
    std::jthread second;  // joined before what it uses is gone, whatever happens here
    if (isSplit) {
        second = std::jthread([&] {
            try {
                secondPart = FetchSecondPart(address, file, stopped.Get());
            } catch (const std::exception&) {
                secondPart = TSecondPart::Broken;
            }
            SetEvent(ended.Get());
        });
    }

    std::uint64_t position = 0;
    THttpError error = FetchRange(exchange, file, position, middle_);
    if (isSplit) {
        if (error == ERROR_SUCCESS) {
            const std::array<HANDLE, 2> events{cancelled_, ended.Get()};
            if (WaitForMultipleObjects(2, events.data(), FALSE, INFINITE) == WAIT_OBJECT_0) {
                error = ERROR_WINHTTP_OPERATION_CANCELLED;
            }
        }
        SetEvent(stopped.Get());
        second.join();
    }
    if (error == ERROR_SUCCESS && (secondPart == TSecondPart::Refused || secondPart == TSecondPart::Broken)) {
        hasWarnings_ = secondPart == TSecondPart::Broken;
        error = FetchRange(exchange, file, position, total_);
    }
    AddDone(0, true);
    return error;
}

THttpError TDownLoadRun::FetchRange(THttpExchange& exchange, TPartFile& file, std::uint64_t& position,
                                    std::uint64_t end) {
    while (position < end) {
        std::string_view bytes;
        if (const THttpError error = exchange.Read(bytes)) {
            return error;
        }
        if (bytes.empty()) {
            return ERROR_WINHTTP_CONNECTION_ERROR;
        }
        // What lies behind the middle is kept too: should the second part fail, it will not come again.
        if (bytes.size() > total_ - position) {
            return ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
        }
        if (const TErrorCode error = file.Write(position, bytes)) {
            return error;
        }
        position += bytes.size();
        AddDone(static_cast<std::int64_t>(bytes.size()));
    }
    return ERROR_SUCCESS;
}

TDownLoadRun::TSecondPart TDownLoadRun::FetchSecondPart(const std::wstring& address, TPartFile& file,
                                                        HANDLE stopped) {
    THttpExchange exchange(options_.userAgent, options_.patience, stopped);
    const std::wstring first = std::to_wstring(middle_);
    const std::wstring last = std::to_wstring(total_ - 1);
    if (exchange.Open(address, L"Range: bytes=" + first + L"-" + last) != ERROR_SUCCESS) {
        return TSecondPart::Broken;
    }
    const std::wstring expected = L"bytes " + first + L"-" + last + L"/" + std::to_wstring(total_);
    if (exchange.Status() != kStatusPartialContent || exchange.Header(L"Content-Range") != expected ||
        IdentityOf(exchange) != identity_) {
        return TSecondPart::Refused;
    }
    std::uint64_t position = middle_;
    if (FetchRange(exchange, file, position, total_) != ERROR_SUCCESS) {
        AddDone(-static_cast<std::int64_t>(position - middle_));
        return TSecondPart::Broken;
    }
    return TSecondPart::Done;
}

TDownLoadRun::TIdentity TDownLoadRun::IdentityOf(const THttpExchange& exchange) {
    return {exchange.Header(L"ETag"), exchange.Header(L"Last-Modified")};
}

void TDownLoadRun::AddDone(std::int64_t bytes, bool always) {
    const auto now = std::chrono::steady_clock::now();
    TDownLoadProgress progress;
    {
        const std::lock_guard lock(mutex_);
        done_ += static_cast<std::uint64_t>(bytes);
        if (!always && now - lastReport_ < kReportInterval) {
            return;
        }
        lastReport_ = now;
        // The block across the middle may have been received by both parts.
        progress.bytesDone = std::min(done_, total_);
    }
    progress.bytesTotal = total_;
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    progress.bytesPerSecond = seconds > 0 ? static_cast<double>(progress.bytesDone) / seconds : 0;
    report_(progress);
}
