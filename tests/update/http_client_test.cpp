#include "update/http_client.h"

#include <winhttp.h>

#include "server_fixture.h"

namespace {

using std::chrono::milliseconds;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

class THttpClientTest : public TServerTest {
protected:
    // Short, so that a server that says nothing does not hold up the tests.
    static constexpr THttpPatience kPatience{milliseconds(1500), milliseconds(3000)};

    // What Get delivers; code -1 when nothing came in time.
    THttpReply Get(const std::wstring& address, milliseconds longest = milliseconds(6000)) {
        THttpReply result{-1, {}, {}};
        bool isFinished = false;
        TipwHTTP client({L"Vardeko 7.8 Update Agent", 65'536, kPatience}, [&](THttpReply reply) {
            EXPECT_EQ(GetCurrentThreadId(), thread_);
            result = std::move(reply);
            isFinished = true;
        });
        client.Get(L"https://" + address);
        EXPECT_TRUE(client.IsBusy());
        WaitFor([&] { return isFinished; }, longest);
        return result;
    }

    const DWORD thread_ = GetCurrentThreadId();
};

TEST_F(THttpClientTest, FetchesAFileUnderItsName) {
    const THttpReply reply = Get(ServerOf("[Vardeko 7.0]\nBuild=7900\n") + L"/info/vardeko.info");
    EXPECT_EQ(reply.code, 0);
    EXPECT_EQ(reply.body, "[Vardeko 7.0]\nBuild=7900\n");
    EXPECT_THAT(Seen(), HasSubstr("/info/vardeko.info range=- agent=Vardeko 7.8 Update Agent"));
}

TEST_F(THttpClientTest, TakesSixtyFourKilobytesAndNoByteMore) {
    EXPECT_EQ(Get(Trusted() + L"/limit/65536/x").body.size(), 65'536u);
    for (const wchar_t* path : {L"/limit/65537/x", L"/endless"}) {
        const THttpReply reply = Get(Trusted() + path);
        EXPECT_EQ(reply.code, ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW);
        EXPECT_EQ(reply.body, "");
    }
}

TEST_F(THttpClientTest, ReportsTheServersRefusal) {
    const THttpReply missing = Get(Trusted() + L"/missing");
    EXPECT_EQ(missing.code, 404);
    EXPECT_EQ(missing.description, L"Not Found");
    EXPECT_EQ(missing.body, "");
    EXPECT_EQ(Get(Trusted() + L"/failing").code, 500);
}

TEST_F(THttpClientTest, RefusesACertificateThatIsNotTheServers) {
    // Windows answers with the first, Wine with the second.
    const auto isRefused = AnyOf(ERROR_WINHTTP_SECURE_FAILURE, ERROR_WINHTTP_SECURE_CHANNEL_ERROR);
    EXPECT_THAT(Get(Untrusted() + L"/limit/60/x").code, isRefused);
    EXPECT_THAT(Get(WrongName() + L"/limit/60/x").code, isRefused);
    EXPECT_THAT(Seen(), Not(HasSubstr("limit")));
}

TEST_F(THttpClientTest, FollowsRedirectsToSecureAddressesOnly) {
    EXPECT_EQ(Get(Trusted() + L"/to_https/limit/60/x").body.size(), 60u);
    EXPECT_EQ(Get(Trusted() + L"/to_http/limit/60/x").code, ERROR_WINHTTP_REDIRECT_FAILED);
    EXPECT_EQ(Get(Trusted() + L"/loop").code, ERROR_WINHTTP_REDIRECT_FAILED);
    EXPECT_THAT(Seen(), Not(HasSubstr("plain")));
}

TEST_F(THttpClientTest, GivesUpOnServersThatAreSilentSlowOrDead) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Get(Trusted() + L"/silent").code, ERROR_WINHTTP_TIMEOUT);
    EXPECT_EQ(Get(Trusted() + L"/trickle").code, ERROR_WINHTTP_TIMEOUT);
    EXPECT_EQ(Get(L"localhost:1/").code, ERROR_WINHTTP_CANNOT_CONNECT);
    EXPECT_EQ(Get(L"nowhere.vardeko.invalid/").code, ERROR_WINHTTP_NAME_NOT_RESOLVED);
    EXPECT_EQ(Get(Trusted() + L"/setup_cut", milliseconds(4000)).body, "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(THttpClientTest, CancelEndsAtOnceAndDeliversNothing) {
    int delivered = 0;
    TipwHTTP client({L"test", 65'536, {}}, [&](THttpReply) { ++delivered; });
    const auto begin = std::chrono::steady_clock::now();
    client.Get(L"https://" + Trusted() + L"/silent");
    WaitFor([] { return false; }, milliseconds(200));
    client.Cancel();
    EXPECT_FALSE(client.IsBusy());
    // Finished, but its message not handled yet.
    client.Get(L"https://" + Trusted() + L"/missing");
    Sleep(200);
    client.Cancel();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(1500));
    WaitFor([] { return false; }, milliseconds(50));
    EXPECT_EQ(delivered, 0);
    // Still good for the next one.
    client.Get(L"https://" + Trusted() + L"/missing");
    EXPECT_TRUE(WaitFor([&] { return delivered == 1; }));
}

}  // namespace
