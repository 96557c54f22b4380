// One request to a web server over HTTPS, each step of which can be given up at once.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "support/handles.h"

// An error code of the system or of WinHTTP; ERROR_SUCCESS when there is none.
using THttpError = DWORD;

// The longest times that a server is waited for.
struct THttpPatience {
    std::chrono::milliseconds step{15'000};    // for one step: connecting, the headers, the next bytes
    std::chrono::milliseconds total{120'000};  // for everything together
};

struct THttpHandleTraits {
    using Handle = void*;  // HINTERNET
    static Handle Invalid() { return nullptr; }
    static void Close(Handle handle);
};
using THttpHandle = TUniqueHandle<THttpHandleTraits>;

// Sends one GET request and reads its answer, blocking the calling thread, which is never the window's.
// The system finds the proxy, checks the certificate and follows redirects, to https:// only. No cookies and
// no credentials are sent.
class THttpExchange {
public:
    // `cancelled`: an event that ends every wait once it is set; it must outlive the object.
    THttpExchange(std::wstring userAgent, THttpPatience patience, HANDLE cancelled);
    THttpExchange(const THttpExchange&) = delete;
    THttpExchange& operator=(const THttpExchange&) = delete;
    // Returns at once, whatever the server does.
    ~THttpExchange();

    // Sends the request and waits for the headers of the answer. `headers`: further lines to send, each but
    // the last ending in CR LF. ERROR_WINHTTP_OPERATION_CANCELLED when cancelled,
    // ERROR_WINHTTP_TIMEOUT when patience ended, ERROR_WINHTTP_UNRECOGNIZED_SCHEME when the address is not
    // https://.
    [[nodiscard]] THttpError Open(const std::wstring& address, const std::wstring& headers = {});

    // Of the answer that Open waited for.
    int Status() const;
    std::wstring StatusText() const;
    std::wstring Header(const wchar_t* name) const;  // empty when it is missing
    std::optional<std::uint64_t> ContentLength() const;

    // Waits for the next bytes, at most kBlockSize; none at the end of the answer. They stay until the next
    // call.
    [[nodiscard]] THttpError Read(std::string_view& bytes);

    static constexpr std::size_t kBlockSize = 4096;

private:
    struct TShared;

    THttpError Prepare(const std::wstring& address, const std::wstring& headers);
    THttpError Await();

    std::wstring userAgent_;
    THttpPatience patience_;
    HANDLE cancelled_;
    std::chrono::steady_clock::time_point end_;
    // Belongs to this object and to the system's callbacks, which may come after it.
    std::shared_ptr<TShared> shared_;
    THttpHandle session_;
    THttpHandle connection_;
    THttpHandle request_;
};

// The text of an error code of an exchange, for people.
std::wstring HttpErrorText(THttpError error);
