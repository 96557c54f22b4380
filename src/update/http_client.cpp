#include "update/http_client.h"

#include <winhttp.h>

#include <exception>
#include <utility>

namespace {

constexpr int kStatusOk = 200;

}  // namespace

TipwHTTP::TipwHTTP(TOptions options, std::function<void(THttpReply)> finished)
    : options_(std::move(options)), finished_(std::move(finished)), thread_([this] { TakeReply(); }) {}

void TipwHTTP::Get(const std::wstring& address) {
    Cancel();
    thread_.Start([this, address] {
        THttpReply reply;
        try {
            reply = Fetch(address);
        } catch (const std::exception&) {
            reply = {ERROR_NOT_ENOUGH_MEMORY, HttpErrorText(ERROR_NOT_ENOUGH_MEMORY), {}};
        }
        {
            const std::lock_guard lock(mutex_);
            reply_ = std::move(reply);
        }
        thread_.Notify();
    });
    busy_ = true;
}

void TipwHTTP::Cancel() {
    thread_.Stop();
    busy_ = false;
    reply_.reset();
}

void TipwHTTP::TakeReply() {
    std::optional<THttpReply> reply;
    {
        const std::lock_guard lock(mutex_);
        reply = std::exchange(reply_, std::nullopt);
    }
    if (reply) {
        busy_ = false;
        finished_(std::move(*reply));
    }
}

THttpReply TipwHTTP::Fetch(const std::wstring& address) const {
    THttpExchange exchange(options_.userAgent, options_.patience, thread_.Cancelled());
    THttpReply reply;
    THttpError error = exchange.Open(address);
    if (error == ERROR_SUCCESS) {
        if (const int status = exchange.Status(); status != kStatusOk) {
            return {status, exchange.StatusText(), {}};
        }
        error = FetchBody(exchange, reply.body);
    }
    if (error != ERROR_SUCCESS) {
        return {static_cast<int>(error), HttpErrorText(error), {}};
    }
    return reply;
}

THttpError TipwHTTP::FetchBody(THttpExchange& exchange, std::string& body) const {
    const auto length = exchange.ContentLength();
    if (length && *length > options_.mostBytes) {
        return ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW;
    }
    std::string_view bytes;
    do {
        if (const THttpError error = exchange.Read(bytes)) {
            return error;
        }
        if (body.size() + bytes.size() > options_.mostBytes) {
            return ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW;
        }
        body += bytes;
    } while (!bytes.empty());
    // A connection that broke off can look like the end of the file.
    return length && *length != body.size() ? ERROR_WINHTTP_CONNECTION_ERROR : ERROR_SUCCESS;
}
