// Runs that copy several files at the same time.
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>

#include "engine/copy_run_fixture.h"
#include "support/path_hash.h"

namespace {

using TClock = std::chrono::steady_clock;

constexpr std::string_view kSeveral = "8";

// The sources being copied, and how many at once at most; nothing is there twice.
std::mutex mutex;
std::set<std::wstring> copying;
std::size_t mostAtOnce = 0;

BOOL WINAPI CopyForSomeTime(LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                            DWORD flags) {
    const std::wstring source = from;
    {
        const std::lock_guard lock(mutex);
        EXPECT_TRUE(copying.insert(source).second) << ToUtf8(source) << " is copied twice at a time";
        mostAtOnce = std::max(mostAtOnce, copying.size());
    }
    // Neighbours take turns in being slow.
    Sleep(static_cast<DWORD>(source[source.size() - 5] * 7 % 5 * 6));
    const bool refused = source.ends_with(L"refused7.txt");
    const BOOL copied = !refused && CopyFileExW(from, to, routine, data, cancel, flags);
    const std::lock_guard lock(mutex);
    copying.erase(source);
    SetLastError(refused ? ERROR_DISK_FULL : ERROR_SUCCESS);
    return copied;
}

// A NAS that hangs: an event that comes late. Where there is a pipe, only one small file waits so, and the
// large one for bytes that never come, which can be broken off.
HANDLE answer = nullptr;
HANDLE silentPipe = nullptr;
std::atomic<unsigned> hanging = 0;
std::atomic<unsigned> copied = 0;

BOOL WINAPI HangingCopy(LPCWSTR from, LPCWSTR to, LPPROGRESS_ROUTINE routine, LPVOID data, LPBOOL cancel,
                        DWORD flags) {
    const std::wstring_view source = from;
    if (silentPipe == nullptr || !source.ends_with(L"0.txt")) {
        ++hanging;
        char byte = 0;
        DWORD read = 0;
        if (silentPipe != nullptr && source.ends_with(L".bin") &&
            !ReadFile(silentPipe, &byte, 1, &read, nullptr)) {
            return FALSE;
        }
        WaitForSingleObject(answer, INFINITE);
    }
    const BOOL done = CopyFileExW(from, to, routine, data, cancel, flags);
    ++copied;
    return done;
}

class SideBySide : public CopyRun {
protected:
    void SetParallel(std::string_view number) {
        WriteSettings("NASDIR=" + ToUtf8(destination_.Path()) + "\r\nPARALLEL=" + std::string(number) +
                      "\r\n");
    }

    void StartAfresh() {
        dm_.reset();
        DeleteFileW((configuration_ + L"\\NASConf.Dat").c_str());
        DeleteFileW((configuration_ + L"\\NASSeen.ini").c_str());
        destination_.Clear();
        AddSource(source_.Path());
    }

    // What the run said of its files, in order.
    std::vector<std::pair<TMessagePos, std::wstring>> Told() const {
        std::vector<std::pair<TMessagePos, std::wstring>> told;
        for (const TReport& report : reports_) {
            if (report.kind != TMessagePos::Ignore && report.text.find(L"..") == std::wstring::npos) {
                told.emplace_back(report.kind, report.text);
            }
        }
        return told;
    }
};

TEST_F(SideBySide, TellsWhatOneAtATimeTells) {
    for (const wchar_t* folder : {L"a\\", L"b\\deep\\", L"c\\"}) {
        for (int file = 0; file < 15; ++file) {
            source_.Write(folder + std::to_wstring(file) + L".txt", "content", TestTime(file));
        }
    }
    source_.Write(L"b\\deep\\refused7.txt", "content", TestTime(0));
    source_.WriteZeros(L"b\\deep\\large.bin", 64 << 20);
    calls_.CopyFileExW = &CopyForSomeTime;
    SetParallel("1");
    StartAfresh();
    // Whatever the list holds twice has one target.
    AddSource(source_.At(L"a"));
    mostAtOnce = 0;
    Run();
    EXPECT_EQ(mostAtOnce, 1U);
    const auto expected = Told();
    EXPECT_GT(expected.size(), 4U * 46);

    SetParallel(kSeveral);
    StartAfresh();
    AddSource(source_.At(L"a"));
    Run();
    EXPECT_GT(mostAtOnce, 4U);
    EXPECT_LE(mostAtOnce, 9U) << "eight, and the large one in between";
    EXPECT_EQ(Told(), expected);
    EXPECT_EQ(Dm().Failures().files, 1U);
    EXPECT_FALSE(Dm().NasData.Find(PathDigest(source_.At(L"b\\deep\\refused7.txt"))));
}

// An earlier copy of "a.txt" must not take the name under which "a #001.txt" is being copied.
TEST_F(SideBySide, KeepsEarlierCopiesApartFromFilesThatAreCalledLikeThem) {
    for (int file = 0; file < 8; ++file) {
        const std::wstring name = L"f" + std::to_wstring(file);
        source_.Write(name + L".txt", "new", TestTime(5));
        source_.Write(name + L" #001.txt", "own", TestTime(5));
        destination_.Write(CopyOf(name + L".txt"), "old", TestTime(1));
    }
    AddSource(source_.Path());
    Dm().MemData.Edit();
    Dm().MemData.Working().History = true;
    Dm().MemData.Post();
    Run();
    EXPECT_TRUE(Texts(TMessagePos::Error).empty());
    EXPECT_EQ(destination_.FileCount(), 8U * 3 + 1) << "new, own and old, and the table";
}

TEST_F(SideBySide, AStopIsAnsweredWhileEightCopiesAndALargeOneHangAndTellsThem) {
    source_.WriteZeros(L"a.bin", 64 << 20);
    source_.Write(L"b.txt", "x", TestTime(0));
    for (int file = 0; file < 100; ++file) {
        source_.Write(L"f" + std::to_wstring(100 + file) + L"0.txt", "x", TestTime(0));
    }
    calls_.CopyFileExW = &HangingCopy;
    SetParallel(kSeveral);
    for (const bool comesBack : {true, false}) {
        StartAfresh();
        HANDLE otherEnd = nullptr;
        answer = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        silentPipe = nullptr;
        ASSERT_TRUE(comesBack || CreatePipe(&silentPipe, &otherEnd, nullptr, 0));
        hanging = 0;
        copied = 0;
        const std::size_t hung = comesBack ? 9 : 2;
        const std::size_t whole = comesBack ? 9 : 30;
        TClock::time_point hangs;
        TClock::time_point stopped;
        std::size_t told = 0;
        Dm().WhileWaiting = [&](TDM& dm) {
            if (hanging < hung || (!comesBack && copied < whole) || CopyIdle) {
                return;
            }
            if (hangs == TClock::time_point()) {
                hangs = TClock::now();  // a click would come now
                return;
            }
            dm.StopCopy();
            stopped = TClock::now();
            EXPECT_EQ(dm.State(), TRunState::Stopping);
            if (comesBack) {
                SetEvent(answer);
            }
            EndRun();
            told = reports_.size();
        };
        Run();
        EXPECT_LT(stopped - hangs, std::chrono::milliseconds(100));
        EXPECT_LT(TClock::now() - stopped, std::chrono::seconds(comesBack ? 2 : 9));
        EXPECT_EQ(hanging, hung) << "nothing was begun after the stop";
        EXPECT_EQ(reports_.size(), told) << "nothing is told after the end of the run";
        const auto rows = Texts(TMessagePos::Memo);
        EXPECT_EQ(rows.size(), whole) << "those behind one that hangs are told as what they are";
        EXPECT_TRUE(std::ranges::is_sorted(rows));
        const std::size_t failed = comesBack ? 0 : hung;
        EXPECT_EQ(Texts(TMessagePos::Error).size(), failed);
        EXPECT_EQ(Texts(TMessagePos::FileMsg).size(), whole + failed);
        EXPECT_EQ(Dm().NasData.RecordCount(), whole);
        EXPECT_EQ(Dm().Failures().files, failed);
        const auto lines = destination_.Read(HostName() + L"\\Error.log").value_or("");
        EXPECT_EQ(std::ranges::count(lines, '\n'), failed);
        Dm().WhileWaiting = nullptr;
        SetEvent(answer);
        while (!comesBack && (copied < whole + 1 || destination_.FileCount() > whole + 2)) {
            Sleep(1);  // the thread that was left behind
        }
        EXPECT_EQ(destination_.FileCount(), whole + 1 + (failed > 0 ? 1 : 0)) << "and takes no name any more";
        Sleep(50);
        CloseHandle(answer);
        if (!comesBack) {
            CloseHandle(otherEnd);
            CloseHandle(silentPipe);
        }
    }
}

}  // namespace
