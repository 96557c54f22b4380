#include "update/http_exchange.h"

#include <winhttp.h>

#include <algorithm>
#include <array>
#include <mutex>

#include "support/system_error.h"
#include "texts/update_texts.h"

namespace {

constexpr DWORD kMostRedirects = 5;

struct TAddressParts {
    std::wstring host;
    std::wstring path;  // with the query, without the fragment
    INTERNET_PORT port = 0;
};

std::optional<TAddressParts> SplitSecureAddress(const std::wstring& address) {
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof(parts);
    // -1 asks for pointers into the address.
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = static_cast<DWORD>(-1);
    if (!WinHttpCrackUrl(address.c_str(), static_cast<DWORD>(address.size()), 0, &parts) ||
        parts.nScheme != INTERNET_SCHEME_HTTPS || parts.dwHostNameLength == 0) {
        return std::nullopt;
    }
    TAddressParts result;
    result.host.assign(parts.lpszHostName, parts.dwHostNameLength);
    result.path.assign(parts.lpszUrlPath, parts.dwUrlPathLength);
    result.path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    result.path.resize(std::min(result.path.size(), result.path.find(L'#')));
    result.port = parts.nPort;
    return result;
}

void SetNumber(HINTERNET handle, DWORD option, DWORD value) {
    WinHttpSetOption(handle, option, &value, sizeof(value));
}

THttpHandle OpenSession(const std::wstring& userAgent, THttpPatience patience) {
    THttpHandle session(WinHttpOpen(userAgent.c_str(), WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY,
                                    WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC));
    if (!session) {
        return session;
    }
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
    if (!WinHttpSetOption(session.Get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof(protocols))) {
        // Systems before Windows 10 20348 refuse what they do not know.
        SetNumber(session.Get(), WINHTTP_OPTION_SECURE_PROTOCOLS, WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2);
    }
    SetNumber(session.Get(), WINHTTP_OPTION_REDIRECT_POLICY,
              WINHTTP_OPTION_REDIRECT_POLICY_DISALLOW_HTTPS_TO_HTTP);
    SetNumber(session.Get(), WINHTTP_OPTION_MAX_HTTP_AUTOMATIC_REDIRECTS, kMostRedirects);
    const auto step = static_cast<int>(patience.step.count());
    WinHttpSetTimeouts(session.Get(), step, step, step, step);
    return session;
}

}  // namespace

void THttpHandleTraits::Close(Handle handle) {
    WinHttpCloseHandle(handle);
}

// What the system's callbacks write, on threads of their own.
struct THttpExchange::TShared {
    TKernelHandle stepEnded{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    std::mutex mutex;
    THttpError error = ERROR_SUCCESS;
    std::size_t received = 0;
    std::array<char, kBlockSize> block{};

    void EndStep(THttpError stepError, std::size_t stepReceived) {
        const std::lock_guard lock(mutex);
        error = stepError;
        received = stepReceived;
        SetEvent(stepEnded.Get());
    }

    // The context is a shared pointer on the heap that lives as long as the request's handle.
    static void CALLBACK Tell(HINTERNET, DWORD_PTR context, DWORD status, void* information, DWORD length) {
        auto* owner = reinterpret_cast<std::shared_ptr<TShared>*>(context);
        if (owner == nullptr) {
            return;
        }
        switch (status) {
            case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
            case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
                (*owner)->EndStep(ERROR_SUCCESS, 0);
                break;
            case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
                (*owner)->EndStep(ERROR_SUCCESS, length);
                break;
            case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
                (*owner)->EndStep(static_cast<const WINHTTP_ASYNC_RESULT*>(information)->dwError, 0);
                break;
            case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
                delete owner;
                break;
            default:
                break;
        }
    }
};

THttpExchange::THttpExchange(std::wstring userAgent, THttpPatience patience, HANDLE cancelled)
    : userAgent_(std::move(userAgent)),
      patience_(patience),
      cancelled_(cancelled),
      end_(std::chrono::steady_clock::now() + patience.total),
      shared_(std::make_shared<TShared>()) {}

THttpExchange::~THttpExchange() = default;

THttpError THttpExchange::Prepare(const std::wstring& address, const std::wstring& headers) {
    const auto parts = SplitSecureAddress(address);
    if (!parts) {
        return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
    }
    session_ = OpenSession(userAgent_, patience_);
    if (!session_) {
        return GetLastError();
    }
    connection_.Reset(WinHttpConnect(session_.Get(), parts->host.c_str(), parts->port, 0));
    if (!connection_) {
        return GetLastError();
    }
    request_.Reset(WinHttpOpenRequest(connection_.Get(), L"GET", parts->path.c_str(), nullptr,
                                      WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                      WINHTTP_FLAG_SECURE | WINHTTP_FLAG_REFRESH));
    if (!request_) {
        return GetLastError();
    }
    SetNumber(request_.Get(), WINHTTP_OPTION_AUTOLOGON_POLICY, WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH);
    SetNumber(request_.Get(), WINHTTP_OPTION_DISABLE_FEATURE, WINHTTP_DISABLE_COOKIES);
    auto context = std::make_unique<std::shared_ptr<TShared>>(shared_);
    auto contextValue = reinterpret_cast<DWORD_PTR>(context.get());
    if (WinHttpSetStatusCallback(request_.Get(), &TShared::Tell,
                                 WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES,
                                 0) == WINHTTP_INVALID_STATUS_CALLBACK ||
        !WinHttpSetOption(request_.Get(), WINHTTP_OPTION_CONTEXT_VALUE, &contextValue,
                          sizeof(contextValue))) {
        return GetLastError();
    }
    static_cast<void>(context.release());  // deleted when the handle closes
    if (!headers.empty() && !WinHttpAddRequestHeaders(request_.Get(), headers.c_str(), static_cast<DWORD>(-1),
                                                      WINHTTP_ADDREQ_FLAG_ADD)) {
        return GetLastError();
    }
    return ERROR_SUCCESS;
}

THttpError THttpExchange::Await() {
    const auto now = std::chrono::steady_clock::now();
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - now);
    const auto wait = std::clamp(left, std::chrono::milliseconds(0), patience_.step);
    // The cancelling event first: it wins when both are set.
    const std::array<HANDLE, 2> events{cancelled_, shared_->stepEnded.Get()};
    switch (WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE,
                                   static_cast<DWORD>(wait.count()))) {
        case WAIT_OBJECT_0:
            return ERROR_WINHTTP_OPERATION_CANCELLED;
        case WAIT_OBJECT_0 + 1: {
            const std::lock_guard lock(shared_->mutex);
            return shared_->error;
        }
        case WAIT_TIMEOUT:
            return ERROR_WINHTTP_TIMEOUT;
        default:
            return GetLastError();
    }
}

THttpError THttpExchange::Open(const std::wstring& address, const std::wstring& headers) {
    if (const THttpError error = Prepare(address, headers)) {
        return error;
    }
    if (!WinHttpSendRequest(request_.Get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0,
                            0)) {
        return GetLastError();
    }
    if (const THttpError error = Await()) {
        return error;
    }
    if (!WinHttpReceiveResponse(request_.Get(), nullptr)) {
        return GetLastError();
    }
    return Await();
}

int THttpExchange::Status() const {
    DWORD status = 0;
    DWORD size = sizeof(status);
    WinHttpQueryHeaders(request_.Get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                        WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX);
    return static_cast<int>(status);
}

namespace {

std::wstring QueryHeader(HINTERNET request, DWORD kind, const wchar_t* name) {
    DWORD size = 0;
    WinHttpQueryHeaders(request, kind, name, WINHTTP_NO_OUTPUT_BUFFER, &size, WINHTTP_NO_HEADER_INDEX);
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size == 0) {
        return {};
    }
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (!WinHttpQueryHeaders(request, kind, name, text.data(), &size, WINHTTP_NO_HEADER_INDEX)) {
        return {};
    }
    text.resize(size / sizeof(wchar_t));  // now without the terminator
    return text;
}

}  // namespace

std::wstring THttpExchange::StatusText() const {
    return QueryHeader(request_.Get(), WINHTTP_QUERY_STATUS_TEXT, WINHTTP_HEADER_NAME_BY_INDEX);
}

std::wstring THttpExchange::Header(const wchar_t* name) const {
    return QueryHeader(request_.Get(), WINHTTP_QUERY_CUSTOM, name);
}

std::optional<std::uint64_t> THttpExchange::ContentLength() const {
    const std::wstring text = Header(L"Content-Length");
    // Up to 18 digits fit.
    if (text.empty() || text.size() > 18 || text.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return std::nullopt;
    }
    return std::stoull(text);
}

THttpError THttpExchange::Read(std::string_view& bytes) {
    bytes = {};
    if (!WinHttpReadData(request_.Get(), shared_->block.data(), kBlockSize, nullptr)) {
        return GetLastError();
    }
    if (const THttpError error = Await()) {
        return error;
    }
    const std::lock_guard lock(shared_->mutex);
    bytes = std::string_view(shared_->block.data(), shared_->received);
    return ERROR_SUCCESS;
}

std::wstring HttpErrorText(THttpError error) {
    switch (error) {
        case ERROR_WINHTTP_NAME_NOT_RESOLVED:
        case ERROR_WINHTTP_CANNOT_CONNECT:
        case ERROR_WINHTTP_TIMEOUT:
        case ERROR_WINHTTP_CONNECTION_ERROR:
            return UpdateTexts::NoServer;
        case ERROR_WINHTTP_SECURE_FAILURE:
            return UpdateTexts::NoSecureConnection;
        default:
            break;
    }
    std::array<wchar_t, 512> buffer{};
    const HMODULE module = GetModuleHandleW(L"winhttp.dll");
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, module,
                                        error, 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    std::wstring text(buffer.data(), length);
    while (!text.empty() && (text.back() <= L' ' || text.back() == L'.')) {
        text.pop_back();
    }
    return text.empty() ? SystemErrorText(error) : text;
}
