// One download from its first byte to its last.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "update/downloader.h"
#include "update/http_exchange.h"
#include "update/part_file.h"

// Does the work of TclDownLoader on its thread. The first connection asks for the whole file. If its answer
// says that ranges are allowed, a second one asks for the second half, and the first stops at the middle. If
// the second one fails the first goes on to the end, so it costs nothing to try.
class TDownLoadRun {
public:
    struct TOptions {
        std::wstring userAgent;
        THttpPatience patience;
        std::uint64_t largestFile = 0;
    };
    using TReport = std::function<void(const TDownLoadProgress&)>;

    // `report` is called on threads of the run, at a bounded rate, and at the end.
    TDownLoadRun(const TPlatformCalls& calls, TOptions options, HANDLE cancelled, TReport report);

    TDownLoadResult Fetch(const std::wstring& address, const std::wstring& localFile);

private:
    enum class TSecondPart { None, Done, Refused, Broken };

    // The answer's headers by which two answers are known to be about the same file.
    struct TIdentity {
        std::wstring tag;
        std::wstring changed;
        friend bool operator==(const TIdentity&, const TIdentity&) = default;
    };

    THttpError FetchParts(THttpExchange& exchange, const std::wstring& address, TPartFile& file);
    THttpError FetchRange(THttpExchange& exchange, TPartFile& file, std::uint64_t& position,
                          std::uint64_t end);
    TSecondPart FetchSecondPart(const std::wstring& address, TPartFile& file, HANDLE stopped);
    static TIdentity IdentityOf(const THttpExchange& exchange);
    void AddDone(std::int64_t bytes, bool always = false);

    const TPlatformCalls& calls_;
    TOptions options_;
    HANDLE cancelled_;
    TReport report_;
    std::uint64_t total_ = 0;
    std::uint64_t middle_ = 0;
    TIdentity identity_;
    bool hasWarnings_ = false;
    std::chrono::steady_clock::time_point begin_;
    std::mutex mutex_;
    std::uint64_t done_ = 0;
    std::chrono::steady_clock::time_point lastReport_;
};
