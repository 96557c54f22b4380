// Sources that change under a run: what stands still is right, and the next run puts right what moved.
#include <atomic>
#include <iostream>

#include "engine/copy_run_fixture.h"
#include "support/path_hash.h"
#include "watched_calls.h"

namespace {

// A content that tells which state of a file it is.
std::string State(char letter, std::size_t size = 3000) {
    return std::string(size, letter);
}

// Later than the present date that a file has for a moment between being written and being dated: a run in
// another thread may see that one, and would take a change dated back from there for none.
FILETIME AfterTheRun() {
    constexpr std::int64_t kThirtyYears = std::int64_t{30} * 365 * 86400;
    return TestTime(kThirtyYears);
}

class MovingTree : public CopyRun {
protected:
    MovingTree() { calls_ = TWatchedCalls::Table(); }

    void MakeTrees() {
        source_.Clear();
        destination_.Clear();
        dm_.reset();
        DeleteFileW((configuration_ + L"\\NASConf.Dat").c_str());
        source_.Write(L"in motion\\old.txt", State('a'), TestTime(0));
        source_.Write(L"still\\old.txt", "old", TestTime(0));
        AddSource(source_.Path());
        Run();
        source_.Write(L"in motion\\old.txt", State('b'), TestTime(10));
        source_.Write(L"in motion\\new.txt", State('b'), TestTime(10));
        source_.Write(L"still\\old.txt", "changed", TestTime(10));
        source_.Write(L"still\\new.txt", "new", TestTime(10));
    }

    // One change a user might make at that moment; they take turns.
    void Disturb(int turn) const {
        for (const wchar_t* name : {L"in motion\\old.txt", L"in motion\\new.txt"}) {
            const std::wstring path = source_.At(name);
            switch (turn % 5) {
                case 0:
                    DeleteFileW(path.c_str());
                    break;
                case 1:
                    source_.Write(name, State('c', 9000), AfterTheRun());
                    break;
                case 2:
                    source_.Write(name, State('c', 10), AfterTheRun());
                    break;
                case 3:
                    MoveFileW(path.c_str(), (path + L".renamed").c_str());
                    break;
                default:
                    source_.Write(L"in motion\\beside", State('d'), AfterTheRun());
                    MoveFileExW(source_.At(L"in motion\\beside").c_str(), path.c_str(),
                                MOVEFILE_REPLACE_EXISTING);
            }
        }
    }

    void ExpectEqual(std::wstring_view folder, const std::string& what) const {
        for (const auto& entry : std::filesystem::directory_iterator(source_.At(folder))) {
            const std::wstring name = std::wstring(folder) + L"\\" + entry.path().filename().wstring();
            EXPECT_EQ(destination_.Read(CopyOf(name)), source_.Read(name)) << what << ToUtf8(name);
            const auto recorded = dm_->NasData.Find(PathDigest(source_.At(name)));
            const TAttributes attributes = QueryAttributes(SystemPlatformCalls(), source_.At(name));
            ASSERT_TRUE(recorded && attributes.Exists()) << what << ToUtf8(name);
            EXPECT_EQ(*recorded, TLocalTimeRule().ToLocal(attributes.data.ftLastWriteTime))
                << what << ToUtf8(name);
        }
    }
};

TEST_F(MovingTree, AChangeBeforeAnyCallIsCopiedThenOrByTheNextRun) {
    int moment = 0;
    for (bool reached = true; reached && !HasFailure(); ++moment) {
        MakeTrees();
        std::atomic<int> calls = 0;
        {
            const TWatchedCalls watch([&](const char*, std::wstring_view) -> DWORD {
                if (calls++ == moment) {
                    Disturb(moment);
                }
                return ERROR_SUCCESS;
            });
            Run();
        }
        reached = calls > moment;
        const std::string what = "disturbed before call " + std::to_string(moment) + ": ";
        ExpectEqual(L"still", what);
        Run();
        ExpectEqual(L"in motion", what);
    }
    std::cout << "moments tried: " << moment << '\n';
    EXPECT_GT(moment, 40);
}

}  // namespace
