#include "server_fixture.h"

#include <wincrypt.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "support/handles.h"
#include "support/text.h"
#include "ui/message_loop.h"
#include "update/http_exchange.h"

namespace {

std::wstring Environment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) {
        ADD_FAILURE() << name << " is missing: start this program through tests/update/run_with_server.sh";
        return L"localhost:1";
    }
    return FromUtf8Lossy(value);
}

void TrustServer() {
    const std::wstring path = Environment("VARDEKO_TEST_AUTHORITY");
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    const HCERTSTORE store =
        CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
    ASSERT_TRUE(CertAddEncodedCertificateToStore(
        store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(bytes.data()),
        static_cast<DWORD>(bytes.size()), CERT_STORE_ADD_REPLACE_EXISTING, nullptr));
    CertCloseStore(store, 0);
}

}  // namespace

void TServerTest::SetUpTestSuite() {
    if (std::getenv("VARDEKO_TEST_AUTHORITY") == nullptr) {
        return;
    }
    static const bool isTrusted = [] {
        TrustServer();
        return true;
    }();
    ASSERT_TRUE(isTrusted);
}

void TServerTest::SetUp() {
    if (std::getenv("VARDEKO_TEST_AUTHORITY") == nullptr) {
        GTEST_SKIP() << "needs the server that tests/update/run_with_server.sh starts, and a user whose "
                        "trust does not "
                        "matter";
    }
    folder_ = (std::filesystem::temp_directory_path() /
               (L"vardeko update " + std::to_wstring(GetCurrentProcessId()) + L" " +
                std::to_wstring(GetTickCount64())))
                  .wstring();
    Seen();
}

void TServerTest::TearDown() {
    std::filesystem::remove_all(folder_);
}

std::wstring TServerTest::Trusted() {
    return Environment("VARDEKO_TEST_TRUSTED");
}
std::wstring TServerTest::Untrusted() {
    return Environment("VARDEKO_TEST_UNTRUSTED");
}
std::wstring TServerTest::Plain() {
    return Environment("VARDEKO_TEST_PLAIN");
}
std::wstring TServerTest::WrongName() {
    return Environment("VARDEKO_TEST_WRONG_NAME");
}

std::wstring TServerTest::ServerOf(std::string_view information) {
    std::wstring digits;
    for (const char byte : information) {
        constexpr std::wstring_view kDigits = L"0123456789abcdef";
        digits += kDigits[static_cast<unsigned char>(byte) >> 4];
        digits += kDigits[static_cast<unsigned char>(byte) & 15];
    }
    return Trusted() + L"/ini/" + digits;
}

std::string TServerTest::Seen() {
    const TKernelHandle never(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    THttpExchange exchange(L"test", {}, never.Get());
    std::string text;
    if (exchange.Open(L"https://" + Trusted() + L"/seen") != ERROR_SUCCESS) {
        ADD_FAILURE() << "the test server does not answer";
        return text;
    }
    std::string_view bytes;
    while (exchange.Read(bytes) == ERROR_SUCCESS && !bytes.empty()) {
        text += bytes;
    }
    return text;
}

bool TServerTest::WaitFor(const std::function<bool()>& condition, std::chrono::milliseconds longest) {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        MSG message{};
        if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            HandleQueuedMessage(message);
        } else {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
        }
    }
    return true;
}

std::string TServerTest::FilesInFolder() const {
    if (!std::filesystem::exists(folder_)) {
        return "-";
    }
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        names.insert(ToUtf8(entry.path().filename().wstring()));
    }
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : " ") + name;
    }
    return text;
}

std::string ServerSetup() {
    std::string bytes;
    for (unsigned index = 0; index < 300'001; ++index) {
        bytes += static_cast<char>((7 * index + index / 251) & 0xFF);
    }
    return bytes;
}
