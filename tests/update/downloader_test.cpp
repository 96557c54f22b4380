#include "update/downloader.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "server_fixture.h"

namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

std::string ContentOf(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

class TDownLoaderTest : public TServerTest {
protected:
    static constexpr THttpPatience kPatience{milliseconds(3000), milliseconds(8000)};

    TclDownLoader MakeLoader() {
        return TclDownLoader(calls_,
                             {[this](const TDownLoadProgress& progress) { progress_ = progress; },
                              [this](const TDownLoadResult& result) { result_ = result; }},
                             kPatience);
    }

    // How the download of a path from the server ends.
    TDownLoadResult DownLoad(const std::wstring& path) {
        result_.reset();
        TclDownLoader loader = MakeLoader();
        loader.Start(L"https://" + Trusted() + path, File());
        EXPECT_TRUE(loader.IsBusy());
        EXPECT_TRUE(WaitFor([this] { return result_.has_value(); }));
        EXPECT_FALSE(loader.IsBusy());
        return result_.value_or(TDownLoadResult{});
    }

    std::wstring File() const { return Folder() + L"\\Setup.exe"; }

    TPlatformCalls calls_ = SystemPlatformCalls();
    TDownLoadProgress progress_;
    std::optional<TDownLoadResult> result_;
};

TEST_F(TDownLoaderTest, FetchesTwoPartsAtOnce) {
    EXPECT_EQ(DownLoad(L"/setup").state, TDownLoadState::Finished);
    EXPECT_EQ(ContentOf(File()), ServerSetup());
    EXPECT_EQ(FilesInFolder(), "Setup.exe");
    EXPECT_EQ(progress_.bytesDone, 300'001u);
    EXPECT_EQ(progress_.bytesTotal, 300'001u);
    EXPECT_GT(progress_.bytesPerSecond, 0);
    const std::string seen = Seen();
    EXPECT_THAT(seen, HasSubstr("/setup range=- agent=Mozilla/5.0"));
    EXPECT_THAT(seen, HasSubstr("/setup range=bytes=150000-300000 "));
}

TEST_F(TDownLoaderTest, FetchesOnePartWhenTheSecondIsNotToBeHad) {
    for (const wchar_t* path : {L"/setup_without_ranges", L"/setup_changed", L"/setup_wrong_range"}) {
        EXPECT_EQ(DownLoad(path).state, TDownLoadState::Finished);
        EXPECT_EQ(ContentOf(File()), ServerSetup());
        EXPECT_EQ(progress_.bytesDone, 300'001u);
    }
    EXPECT_EQ(DownLoad(L"/setup_second_part_cut").state, TDownLoadState::FinishedWithWarnings);
    EXPECT_EQ(ContentOf(File()), ServerSetup());
}

TEST_F(TDownLoaderTest, LeavesNothingOfAnIncompleteFile) {
    for (const wchar_t* path : {L"/setup_cut", L"/setup_short", L"/setup_huge", L"/setup_without_length",
                                L"/missing", L"/failing", L"/to_http/setup", L"/silent"}) {
        const TDownLoadResult result = DownLoad(path);
        EXPECT_EQ(result.state, TDownLoadState::Failed);
        EXPECT_NE(result.errorText, L"");
        EXPECT_THAT(FilesInFolder(), testing::AnyOf("-", ""));
    }
    EXPECT_EQ(DownLoad(L"/missing").errorText, L"404 Not Found");
    EXPECT_THAT(Seen(), Not(HasSubstr("plain")));
}

TEST_F(TDownLoaderTest, AFailedDownloadKeepsTheFileThatWasThere) {
    std::filesystem::create_directories(Folder());
    std::ofstream(std::filesystem::path(File())) << "old";
    EXPECT_EQ(DownLoad(L"/setup_cut").state, TDownLoadState::Failed);
    EXPECT_EQ(ContentOf(File()), "old");
    // The disk is full.
    calls_.WriteFile = [](HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED) -> BOOL {
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    };
    EXPECT_EQ(DownLoad(L"/setup").state, TDownLoadState::Failed);
    EXPECT_THAT(result_->errorText, testing::StartsWith(L"112 "));
    EXPECT_EQ(ContentOf(File()), "old");
    EXPECT_EQ(FilesInFolder(), "Setup.exe");
    // A scanner holds what has come for longer than a second.
    calls_.WriteFile = &WriteFile;
    static int refusals;
    refusals = 12;
    calls_.Sleep = [](DWORD) {};
    calls_.MoveFileExW = [](LPCWSTR from, LPCWSTR to, DWORD flags) -> BOOL {
        if (refusals-- > 0) {
            SetLastError(ERROR_SHARING_VIOLATION);
            return FALSE;
        }
        return MoveFileExW(from, to, flags);
    };
    EXPECT_EQ(DownLoad(L"/setup").state, TDownLoadState::Finished);
    EXPECT_NE(ContentOf(File()), "old");
}

TEST_F(TDownLoaderTest, CanBeStopped) {
    TclDownLoader loader = MakeLoader();
    loader.Start(L"https://" + Trusted() + L"/setup_slow", File());
    ASSERT_TRUE(WaitFor([this] { return progress_.bytesDone > 0; }));
    EXPECT_EQ(FilesInFolder(), "Setup.exe.part");
    auto begin = std::chrono::steady_clock::now();
    loader.Cancel();
    ASSERT_TRUE(WaitFor([this] { return result_.has_value(); }));
    EXPECT_EQ(result_->state, TDownLoadState::Stopped);
    EXPECT_EQ(FilesInFolder(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(500));

    // The end of the program.
    result_.reset();
    progress_ = {};
    loader.Start(L"https://" + Trusted() + L"/setup_slow", File());
    ASSERT_TRUE(WaitFor([this] { return progress_.bytesDone > 0; }));
    begin = std::chrono::steady_clock::now();
    loader.StopNow();
    EXPECT_EQ(FilesInFolder(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(500));
    WaitFor([] { return false; }, milliseconds(50));
    EXPECT_FALSE(result_.has_value());
}

}  // namespace
