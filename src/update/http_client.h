// Fetches a small text file from a web server.
#pragma once

#include <windows.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "update/http_exchange.h"
#include "update/transfer_thread.h"

// What came of one request. `code` is 0 when the whole file is in `body`; else it is the server's status or
// an error code of the system, and `description` its text.
struct THttpReply {
    int code = 0;
    std::wstring description;
    std::string body;
};

// Fetches one file at a time over HTTPS on a thread of its own, so that the window never waits for a server.
// The system's HTTP service finds the proxy and checks the certificate.
class TipwHTTP {
public:
    struct TOptions {
        std::wstring userAgent;
        std::size_t mostBytes = 65'536;  // a longer file is an error
        THttpPatience patience;
    };

    // `finished` runs on the window's thread, once for each Get that is not cancelled.
    TipwHTTP(TOptions options, std::function<void(THttpReply)> finished);

    // Starts to fetch the file; what was being fetched before is cancelled.
    void Get(const std::wstring& address);

    bool IsBusy() const { return busy_; }

    // Ends the request at once; `finished` will not run for it.
    void Cancel();

private:
    THttpReply Fetch(const std::wstring& address) const;
    THttpError FetchBody(THttpExchange& exchange, std::string& body) const;
    void TakeReply();

    TOptions options_;
    std::function<void(THttpReply)> finished_;
    bool busy_ = false;
    std::mutex mutex_;
    std::optional<THttpReply> reply_;  // from the thread, not yet taken
    TTransferThread thread_;           // the last member: ends before what it uses
};
