// What the tests that talk to the test server share.
#pragma once

#include <windows.h>

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

// Knows the addresses of the server that run_with_server.sh started and trusts its certificate.
class TServerTest : public testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    // "localhost:port" of the three servers, and of the trusted one by a name its certificate does not hold.
    static std::wstring Trusted();
    static std::wstring Untrusted();
    static std::wstring Plain();
    static std::wstring WrongName();

    // A server whose information file has the given bytes; "{trusted}" and "{plain}" in them become ports.
    static std::wstring ServerOf(std::string_view information);

    // What the server was asked for since the last call, one line each.
    static std::string Seen();

    // Handles messages until the condition holds; false after the time is up.
    static bool WaitFor(const std::function<bool()>& condition,
                        std::chrono::milliseconds longest = std::chrono::seconds(10));

    // A folder of the test's own, which is not there yet.
    const std::wstring& Folder() const { return folder_; }
    // The names of the files in it, sorted, separated by blanks; "-" when it does not exist.
    std::string FilesInFolder() const;

private:
    std::wstring folder_;
};

// The setup as the server sends it.
std::string ServerSetup();
