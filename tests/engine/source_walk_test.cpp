// What the scan walks through and what it tells, on file systems in memory.
#include "engine/source_walk.h"

#include <gtest/gtest.h>

#include "engine/memory_files.h"
#include "engine/scan_folders.h"
#include "engine/verify_scan.h"
#include "support/path_hash.h"

namespace {

using TPaths = std::vector<std::wstring>;

constexpr DWORD kFile = FILE_ATTRIBUTE_ARCHIVE;
constexpr DWORD kFolder = FILE_ATTRIBUTE_DIRECTORY;
constexpr DWORD kCloudFile = 0x0040'0000;

FILETIME At(std::int64_t seconds) {
    const std::int64_t ticks = 133'600'000'000'000'000 + seconds * 10'000'000;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

SourceFolderRow Row(const std::wstring& folder, bool recursive = true) {
    SourceFolderRow row;
    row.Aktive = true;
    row.Directory = folder;
    row.Rekursiv = recursive;
    return row;
}

class SourceWalk : public testing::Test {
protected:
    SourceWalk() {
        CreateHashContext();
        records_.Open();
        files_.Add(L"N:\\PC", kFolder);
    }

    void Scan(std::vector<SourceFolderRow> rows, bool fetchCloudFiles = false) {
        const TScanParameters parameters{
            .dataSet = std::make_shared<const std::vector<SourceFolderRow>>(std::move(rows)),
            .nasData = records_.Snapshot(),
            .nas = L"N:",
            .host = L"PC",
            .fetchCloudFiles = fetchCloudFiles};
        RunTask([&](IOmniTask& task) { TFolderScan(task, TMemoryFiles::Table(), parameters).Run(); });
    }

    // With the scan's filters, order and names: what is checked is what would be copied.
    void Check(std::vector<SourceFolderRow> rows) {
        const TVerifyParameters parameters{
            .dataSet = std::move(rows),
            .nasData = records_.Snapshot(),
            .nas = L"N:",
            .host = L"PC",
            .slice = {},
            .sourceRoots = std::make_shared<TSourceRoots>(TMemoryFiles::Table())};
        RunTask([&](IOmniTask& task) { TVerifyScan(task, TMemoryFiles::Table(), parameters).Run(); });
    }

    void RunTask(const TTaskMethod& method) {
        toCopy_.clear();
        problems_.clear();
        unchanged_.clear();
        compared_.clear();
        cloudFiles_ = 0;
        TOmniEventMonitor monitor([] {});
        monitor.OnTaskMessage = [this](IOmniTask&, TTaskMessage& message) { Receive(message.value); };
        monitor.OnTaskTerminated = [](IOmniTask&) {};
        IOmniTaskControl control(method, L"Scan");
        control.MonitorWith(monitor);
        control.Run();
        control.WaitFor(kUnlimitedWait);
        monitor.Deliver();
    }

    void Receive(TTaskValue& value) {
        if (const auto* list = std::get_if<std::unique_ptr<TStringList>>(&value)) {
            toCopy_.insert(toCopy_.end(), (*list)->begin(), (*list)->end());
        } else if (const auto* unchanged = std::get_if<std::unique_ptr<TUnchangedList>>(&value)) {
            unchanged_.insert(unchanged_.end(), (*unchanged)->begin(), (*unchanged)->end());
        } else if (const auto* problem = std::get_if<TProblem>(&value)) {
            problems_.push_back(*problem);
        } else if (const auto* compared = std::get_if<TComparedFolder>(&value)) {
            compared_.push_back(compared->path + L" " + std::to_wstring(compared->files));
        } else if (const auto* checked = std::get_if<TVerifyCounts>(&value)) {
            checked_ = *checked;
        } else if (const auto* number = std::get_if<std::int64_t>(&value)) {
            cloudFiles_ = *number;
        }
    }

    TPaths Told(TProblemKind kind) const {
        TPaths paths;
        for (const TProblem& problem : problems_) {
            if (problem.what == kind) {
                paths.push_back(problem.path);
            }
        }
        return paths;
    }

    TMemoryFiles files_;
    THashTable records_;
    TPaths toCopy_;
    TPaths compared_;
    TVerifyCounts checked_;
    TUnchangedList unchanged_;
    std::vector<TProblem> problems_;
    std::int64_t cloudFiles_ = 0;
};

TEST_F(SourceWalk, ReadsRowsAsMeantOrTellsThem) {
    files_.Add(L"C:\\Eigene Daten\\a.txt", kFile);
    files_.Add(L"C:\\100%ig\\a.txt", kFile);
    SetEnvironmentVariableW(L"VARDEKO_TEST", L"C:\\Eigene Daten");
    SetEnvironmentVariableW(L"ig", L"anderes");
    for (const wchar_t* typed : {L"C:\\Eigene Daten", L" \"C:/Eigene Daten/\" ", L"\\\\?\\C:\\Eigene Daten",
                                 L"%VARDEKO_TEST%", L"%vardeko_test%\\"}) {
        Scan({Row(typed)});
        EXPECT_EQ(toCopy_, TPaths{L"C:\\Eigene Daten\\a.txt"}) << typed;
        EXPECT_TRUE(problems_.empty()) << typed;
    }
    Scan({Row(L"C:\\100%ig")});
    EXPECT_EQ(toCopy_, TPaths{L"C:\\100%ig\\a.txt"});
    const TPaths missing{L"",        L"Eigene Daten",     L"\\Eigene Daten",         L"C:Eigene Daten",
                         L"C:\\weg", L"%VARDEKO_NICHTS%", L"C:\\Eigene Daten\\a.txt"};
    std::vector<SourceFolderRow> rows;
    for (const std::wstring& typed : missing) {
        rows.push_back(Row(typed));
    }
    Scan(rows);
    EXPECT_EQ(toCopy_, TPaths{});
    EXPECT_EQ(Told(TProblemKind::SourceFolderMissing), missing);
}

TEST_F(SourceWalk, CopiesATargetOnceHoweverRowsOverlap) {
    files_.Add(L"C:\\Daten\\a.txt", kFile);
    files_.Add(L"C:\\Daten\\Sub\\b.txt", kFile);
    files_.Add(L"C:\\Daten\\Sub\\versteckt\\c.txt", kFile);
    SourceFolderRow hidden = Row(L"C:\\daten\\sub");
    hidden.Hidden = true;
    Scan({Row(L"C:\\Daten", false), Row(L"c:\\DATEN\\"), hidden, Row(L"C:\\Daten\\Sub", false)});
    EXPECT_EQ(toCopy_,
              (TPaths{L"C:\\Daten\\a.txt", L"c:\\DATEN\\Sub\\b.txt", L"c:\\DATEN\\Sub\\versteckt\\c.txt"}));
    EXPECT_EQ(compared_, (TPaths{L"C:\\Daten 1", L"c:\\DATEN 2"}));
    EXPECT_TRUE(problems_.empty());
}

TEST_F(SourceWalk, NeverEntersTheBackup) {
    files_.Add(L"N:\\PC\\drive_C\\Daten\\a.txt", kFile);
    files_.Add(L"N:\\Fotos\\b.jpg", kFile);
    files_.Add(L"C:\\Daten\\zur Sicherung", kFolder | FILE_ATTRIBUTE_REPARSE_POINT);
    files_.Alias(L"C:\\Daten\\zur Sicherung", L"N:\\PC\\drive_C");
    files_.Add(L"C:\\Daten\\zum NAS", kFolder | FILE_ATTRIBUTE_REPARSE_POINT);
    files_.Alias(L"C:\\Daten\\zum NAS", L"N:");
    files_.Alias(L"S:", L"N:");
    files_.Alias(L"T:", L"N:\\PC\\drive_C");
    const auto copied = [&](const wchar_t* row) {
        Scan({Row(row)});
        return toCopy_;
    };
    const auto passedOver = TProblemKind::BackupInSource;
    EXPECT_EQ(copied(L"n:\\"), TPaths{L"n:\\Fotos\\b.jpg"});
    EXPECT_EQ(Told(passedOver), TPaths{L"n:\\PC"});
    EXPECT_EQ(copied(L"S:"), TPaths{L"S:\\Fotos\\b.jpg"});
    EXPECT_EQ(Told(passedOver), TPaths{L"S:\\PC"});
    EXPECT_EQ(copied(L"C:\\Daten"), TPaths{L"C:\\Daten\\zum NAS\\Fotos\\b.jpg"});
    EXPECT_EQ(Told(passedOver).size(), 1U) << "once is enough";
    for (const wchar_t* row :
         {L"N:\\PC", L"n:\\pc\\drive_C\\Daten", L"S:\\PC\\drive_C", L"T:\\Daten", L"T:"}) {
        EXPECT_EQ(copied(row), TPaths{}) << row;
        EXPECT_EQ(Told(TProblemKind::SourceInBackup).size(), 1U) << row;
    }
    // A folder of the backup that leads back to what it is a copy of.
    files_.Add(L"E:\\x.txt", kFile);
    files_.Add(L"N:\\PC\\drive_E", kFolder | FILE_ATTRIBUTE_REPARSE_POINT);
    files_.Alias(L"N:\\PC\\drive_E", L"E:");
    EXPECT_EQ(copied(L"E:\\"), TPaths{});
    EXPECT_EQ(Told(TProblemKind::SourceInBackup), TPaths{L"E:"});
}

TEST_F(SourceWalk, TellsTheFileWhoseNameAnotherOneHas) {
    files_.MakeCaseSensitive(L"C:\\Daten");
    for (const wchar_t* name :
         {L"Brief.doc", L"brief.doc", L"einzeln.doc", L"Sub\\x.txt", L"sub\\X.txt", L"sub\\y.txt"}) {
        files_.Add(std::wstring(L"C:\\Daten\\") + name, kFile, At(9), 1);
    }
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, (TPaths{L"C:\\Daten\\Brief.doc", L"C:\\Daten\\einzeln.doc", L"C:\\Daten\\Sub\\x.txt",
                               L"C:\\Daten\\sub\\y.txt"}));
    EXPECT_EQ(Told(TProblemKind::NamesCollide), (TPaths{L"C:\\Daten\\brief.doc", L"C:\\Daten\\sub\\X.txt"}));

    // Whose copy is there keeps it, whoever is listed first; one whose spelling alone has changed has it
    // still.
    files_.Add(L"N:\\PC\\drive_C\\Daten\\brief.doc", kFile, At(9), 1);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\EINZELN.doc", kFile, At(9), 1);
    Scan({Row(L"C:\\Daten", false)});
    EXPECT_EQ(toCopy_, TPaths{});
    EXPECT_EQ(Told(TProblemKind::NamesCollide), TPaths{L"C:\\Daten\\Brief.doc"});

    // A check sees each copy as that of one file.
    files_.Add(L"N:\\PC\\drive_C\\Daten\\Sub\\x.txt", kFile, At(9), 1);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\Sub\\y.txt", kFile, At(9), 2);
    Check({Row(L"C:\\Daten")});
    EXPECT_EQ(Told(TProblemKind::NamesCollide), (TPaths{L"C:\\Daten\\Brief.doc", L"C:\\Daten\\sub\\X.txt"}));
    EXPECT_EQ(Told(TProblemKind::CopySizeDiffers), TPaths{L"C:\\Daten\\sub\\y.txt"});
    EXPECT_TRUE(checked_.isComplete && checked_.files == 4 && checked_.good == 3 && checked_.bad == 1);
}

TEST_F(SourceWalk, TwoNamesAreTwoFilesWhereTheDestinationSaysSo) {
    files_.MakeCaseSensitive(L"C:\\Daten");
    files_.MakeCaseSensitive(L"N:\\PC\\drive_C\\Daten");
    files_.Add(L"C:\\Daten\\Brief.doc", kFile, At(9));
    files_.Add(L"C:\\Daten\\brief.doc", kFile, At(9));
    files_.Add(L"N:\\PC\\drive_C\\Daten\\brief.doc", kFile, At(9));
    files_.Add(L"C:\\Daten\\Sub\\x.txt", kFile, At(9));
    files_.Add(L"C:\\Daten\\sub\\x.txt", kFile, At(9));
    files_.Add(L"N:\\PC\\drive_C\\Daten\\Sub\\x.txt", kFile, At(9));
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, (TPaths{L"C:\\Daten\\Brief.doc", L"C:\\Daten\\sub\\x.txt"}));
    EXPECT_TRUE(problems_.empty());
}

TEST_F(SourceWalk, AnEarlierCopyOfAnotherFileIsNoCopy) {
    const std::wstring path = L"C:\\Daten\\a #001.txt";
    files_.Add(path, kFile, At(0), 5);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\a #001.txt", kFile, At(9), 6);
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(Told(TProblemKind::NamesCollide), TPaths{path});
    // Once copied from here and then changed back to an older state, it is left as any other file.
    records_.RecordCopiedFile(PathDigest(path), TLocalTimeRule().ToLocal(At(9)));
    Scan({Row(L"C:\\Daten")});
    EXPECT_TRUE(problems_.empty());
    EXPECT_EQ(toCopy_, TPaths{});
}

TEST_F(SourceWalk, AsksForNamesThatTheDestinationSpellsDifferently) {
    files_.IgnoreAccents(L"N:\\PC\\drive_C\\Daten");
    files_.Add(L"C:\\Daten\\\u00E4rger.txt", kFile, At(9), 1);
    files_.Add(L"C:\\Daten\\neu \u00E4.txt", kFile, At(9), 1);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\a\u0308rger.txt", kFile, At(9), 1);
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, TPaths{L"C:\\Daten\\neu \u00E4.txt"});
    // Both forms on the source, one file on the destination.
    files_.Add(L"C:\\Daten\\a\u0308rger.txt", kFile, At(9), 1);
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(Told(TProblemKind::NamesCollide), TPaths{L"C:\\Daten\\\u00E4rger.txt"});
}

TEST_F(SourceWalk, AMovedTimeZoneOnlyChangesRecords) {
    files_.Add(L"C:\\Daten\\a.txt", kFile, At(9), 1);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\a.txt", kFile, At(9), 1);
    const TDateTime now = TLocalTimeRule().ToLocal(At(9));
    records_.RecordCopiedFile(PathDigest(L"C:\\Daten\\a.txt"), {now.milliseconds - 3'600'000});
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, TPaths{});
    ASSERT_EQ(unchanged_.size(), 1U);
    EXPECT_EQ(unchanged_[0].hash, PathDigest(L"C:\\Daten\\a.txt"));
    EXPECT_EQ(unchanged_[0].date, now);
}

TEST_F(SourceWalk, FetchesNothingFromTheCloudUnlessWanted) {
    files_.Add(L"C:\\Daten\\fern.txt", kFile | kCloudFile, At(9), 1);
    files_.Add(L"C:\\Daten\\gesichert.txt", kFile | kCloudFile, At(9), 1);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\gesichert.txt", kFile, At(9), 1);
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, TPaths{});
    EXPECT_EQ(cloudFiles_, 1);
    Scan({Row(L"C:\\Daten")}, true);
    EXPECT_EQ(toCopy_, TPaths{L"C:\\Daten\\fern.txt"});
    EXPECT_EQ(cloudFiles_, 0);
}

TEST_F(SourceWalk, JudgesALinkByWhatItLeadsTo) {
    files_.Add(L"D:\\ziel.txt", kFile, At(9), 7);
    for (const wchar_t* name : {L"C:\\Daten\\gleich.txt", L"C:\\Daten\\neu.txt", L"C:\\Daten\\tot.txt"}) {
        files_.Add(name, kFile | FILE_ATTRIBUTE_REPARSE_POINT, At(0));
        files_.Alias(name, L"D:\\ziel.txt");
    }
    files_.Alias(L"C:\\Daten\\tot.txt", L"D:\\weg.txt");
    files_.Add(L"N:\\PC\\drive_C\\Daten\\gleich.txt", kFile, At(9), 7);
    files_.Add(L"N:\\PC\\drive_C\\Daten\\neu.txt", kFile, At(0), 7);
    Scan({Row(L"C:\\Daten")});
    EXPECT_EQ(toCopy_, TPaths{L"C:\\Daten\\neu.txt"});
}

TEST_F(SourceWalk, TellsOnceThatASourceFolderIsLost) {
    const auto fill = [&] {
        for (const wchar_t* folder : {L"C:\\Daten", L"C:\\Daten\\a", L"C:\\Daten\\b", L"C:\\Daten\\c"}) {
            files_.Add(folder + std::wstring(L"\\x.txt"), kFile);
        }
    };
    const struct {
        const wchar_t* gone;
        const wchar_t* remains;
        bool isLost;
    } cases[] = {{L"C:", L"", true},                  // the drive's letter
                 {L"C:\\Daten", L"C:\\Daten", true},  // what was mounted there
                 {L"C:\\Daten\\b", L"", false}};
    for (const auto& [gone, remains, isLost] : cases) {
        // While folders are collected, and while their files are listed.
        for (const int whenListed : {1, 2}) {
            fill();
            int listed = 0;
            files_.beforeListing = [&](std::wstring_view folder) {
                if (folder == L"C:\\Daten\\b" && ++listed == whenListed) {
                    files_.Remove(gone);
                    if (*remains != L'\0') {
                        files_.Add(remains, kFolder);
                    }
                }
            };
            Scan({Row(L"C:\\Daten")});
            files_.beforeListing = nullptr;
            EXPECT_EQ(Told(TProblemKind::SourceFolderLost), isLost ? TPaths{L"C:\\Daten"} : TPaths{}) << gone;
            EXPECT_EQ(problems_.size(), isLost ? 1U : 0U) << gone;
        }
    }
}

TEST_F(SourceWalk, ACopyThatFindsNoFileAsksWhetherItsSourceFolderIsThere) {
    files_.Add(L"C:\\Daten\\a.txt", kFile);
    files_.Add(L"C:\\Daten\\Sub\\b.txt", kFile);
    TSourceRoots roots(TMemoryFiles::Table());
    roots.SawContent(roots.Add(L"C:\\Daten"));
    roots.Add(L"C:\\Daten\\Sub");
    EXPECT_FALSE(roots.Missed(L"C:\\Daten\\weg.txt"));
    EXPECT_FALSE(roots.Missed(L"D:\\Daten\\weg.txt"));
    files_.Remove(L"C:");
    const auto told = roots.Missed(L"c:\\DATEN\\Sub\\b.txt");
    ASSERT_TRUE(told);
    EXPECT_EQ(told->path, L"C:\\Daten\\Sub");
    EXPECT_FALSE(roots.Missed(L"C:\\Daten\\Sub\\c.txt")) << "once is enough";
    // The other one was asked a moment ago.
    EXPECT_FALSE(roots.Missed(L"C:\\Daten\\a.txt"));
    const std::vector<TProblem> owed = roots.AskOwed();
    ASSERT_EQ(owed.size(), 1U);
    EXPECT_EQ(owed[0].path, L"C:\\Daten");
    EXPECT_TRUE(roots.AskOwed().empty());
}

}  // namespace
