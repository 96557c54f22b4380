// Rebuilding the hash table from a backup that an earlier version made.
#include <atomic>

#include "engine/copy_run_fixture.h"
#include "hashdb/hash_table_file.h"
#include "support/path_hash.h"
#include "watched_calls.h"

namespace {

class Reindex : public CopyRun {
protected:
    Reindex() {
        source_.Write(L"direct.txt", "lies in the source folder itself", TestTime(0));
        source_.Write(L"sub\\known.txt", "has a copy", TestTime(9));
        source_.Write(L"sub\\unknown.txt", "has none", TestTime(9));
        source_.Write(L"sub\\deeper\\known.txt", "has a copy", TestTime(9));
        destination_.Write(CopyOf(L"direct.txt"), "lies in the source folder itself", TestTime(0));
        destination_.Write(CopyOf(L"sub\\known.txt"), "copy", TestTime(5));
        destination_.Write(CopyOf(L"sub\\deeper\\known.txt"), "copy", TestTime(6));
        AddSource(source_.Path());
        Dm().MemData.First();
    }

    void Rebuild() {
        reports_.clear();
        ASSERT_TRUE(Dm().BeginReindex());
        Dm().ReIndexNasData();
        Dm().EndReindex();
    }

    std::size_t StoredRecords() const {
        return (destination_.Read(HostName() + L"\\Vardeko.dat").value_or(std::string(42, ' ')).size() - 42) /
               78;
    }
};

TEST_F(Reindex, RecordsEveryCopyBelowTheSourceFoldersWithItsOwnDate) {
    Rebuild();
    EXPECT_EQ(StoredRecords(), 2U);
    EXPECT_EQ(Dm().NasData.Find(PathDigest(source_.At(L"sub\\known.txt"))),
              TLocalTimeRule().ToLocal(TestTime(5)));
    EXPECT_EQ(Dm().NasData.Find(PathDigest(source_.At(L"sub\\deeper\\known.txt"))),
              TLocalTimeRule().ToLocal(TestTime(6)));
    EXPECT_FALSE(Dm().NasData.Find(PathDigest(source_.At(L"direct.txt")))) << "left out on purpose";
    const std::vector folders{source_.At(L"sub"), source_.At(L"sub\\deeper")};
    EXPECT_EQ(Texts(TMessagePos::Status), folders);
    EXPECT_EQ(Texts(TMessagePos::Memo), folders);
    EXPECT_EQ(Texts(TMessagePos::FileMsg), (std::vector<std::wstring>{L"known.txt", L"known.txt"}));
    EXPECT_FALSE(Dm().NasData.HasIndex());

    // The walk begins at the current row, which now stands behind the last one.
    Rebuild();
    EXPECT_EQ(StoredRecords(), 2U);
    Dm().MemData.First();
    Rebuild();
    EXPECT_EQ(StoredRecords(), 4U) << "appended without looking";

    // The next run indexes the table again and goes by it.
    Run();
    EXPECT_EQ(Texts(TMessagePos::Memo).size(), 3U) << "two newer than their copies, one without";
    EXPECT_EQ(Texts(TMessagePos::Error), std::vector<std::wstring>{});
}

TEST_F(Reindex, AStopKeepsWhatWasMade) {
    onReport_ = [this](const TReport& report) {
        if (report.kind == TMessagePos::FileMsg) {
            Dm().StopCopy();
        }
    };
    Rebuild();
    EXPECT_EQ(StoredRecords(), 1U);
}

TEST_F(Reindex, WithoutABackupOnlyTellsSo) {
    std::filesystem::remove_all(HostFolder());
    Rebuild();
    EXPECT_EQ(Texts(TMessagePos::Memo),
              std::vector{L"Error: Destination Directory does not exist, " + Dm().NAS});
    EXPECT_EQ(destination_.FileCount(), 0U);
}

// A share that asks for a password is the user's to open beforehand.
TEST_F(Reindex, OpensNoConnectionOfItsOwn) {
    static bool asked = false;
    calls_.WNetAddConnection2W = [](NETRESOURCEW*, const wchar_t*, const wchar_t*, DWORD) -> DWORD {
        asked = true;
        return ERROR_LOGON_FAILURE;
    };
    TSettings settings;
    settings.NASDIR = {destination_.Path(), true};
    settings.CONNECT = {true, true};
    settings.USER.value = TSecret(L"sicherung");
    settings.PASS.value = TSecret(L"geheim");
    settings.USER.known = settings.PASS.known = true;
    ASSERT_FALSE(::WriteSettings(calls_, configuration_ + L"\\NASConf.ini", settings));
    Rebuild();
    EXPECT_TRUE(Dm().UseConnect) << "the settings are those of a run";
    EXPECT_FALSE(asked);
    EXPECT_EQ(StoredRecords(), 2U);
}

TEST_F(Reindex, AsksTheDestinationOncePerFolder) {
    for (int index = 0; index < 100; ++index) {
        const std::wstring name = L"many\\f" + std::to_wstring(index);
        source_.Write(name, "x");
        destination_.Write(CopyOf(name), "x");
    }
    dm_.reset();
    calls_ = TWatchedCalls::Table();
    AddSource(source_.Path());
    Dm().MemData.First();
    std::atomic<int> questions = 0;
    const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
        const bool isQuestion =
            call != std::string_view("FindFirstFileEx") && call != std::string_view("CreateFile");
        questions += isQuestion && path.find(L"drive_") != std::wstring_view::npos ? 1 : 0;
        return ERROR_SUCCESS;
    });
    Rebuild();
    EXPECT_EQ(StoredRecords(), 102U);
    EXPECT_EQ(questions, 0);
}

}  // namespace
