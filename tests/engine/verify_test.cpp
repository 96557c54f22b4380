// A check of the backup: whatever is wrong with copies is found, nothing else is, and nothing is changed.
#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <set>

#include "engine/copy_run_fixture.h"
#include "support/case_folding.h"
#include "support/handles.h"
#include "watched_calls.h"

namespace {

// A destination on which files are not read past the caches: not at all, or only as far as whole sectors
// came.
bool refusesAtOnce = false;
std::mutex mutex;
std::set<HANDLE> pastCaches;
std::set<HANDLE> cutShort;
int refusals = 0;

HANDLE WINAPI OpenThere(LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                        DWORD disposition, DWORD flags, HANDLE pattern) {
    const bool isPastCaches = (flags & FILE_FLAG_NO_BUFFERING) != 0;
    if (isPastCaches && refusesAtOnce) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = CreateFileW(path, access, sharing, security, disposition, flags, pattern);
    const std::scoped_lock lock(mutex);
    cutShort.erase(file);
    pastCaches.erase(file);
    if (isPastCaches) {
        pastCaches.insert(file);
    }
    return file;
}

BOOL WINAPI ReadThere(HANDLE file, LPVOID bytes, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    {
        const std::scoped_lock lock(mutex);
        if (pastCaches.contains(file)) {
            if (!cutShort.insert(file).second) {
                ++refusals;
                SetLastError(ERROR_INVALID_PARAMETER);
                return FALSE;
            }
            size = 1000;
        }
    }
    return ReadFile(file, bytes, size, read, overlapped);
}

const TRunOrder kCheck{.copy = false, .check = TCheckOrder()};

class Check : public CopyRun {
protected:
    Check() { UseMovedClock(calls_); }

    // Every path at the destination with its content and date.
    std::map<std::wstring, std::string> Destination() const {
        std::map<std::wstring, std::string> found;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(ExtendedPath(destination_.Path()))) {
            const std::wstring path = entry.path().wstring();
            found[path] =
                entry.is_regular_file()
                    ? ContentOf(path) + std::to_string(entry.last_write_time().time_since_epoch().count())
                    : "folder";
        }
        return found;
    }

    // What the copies are told to suffer from, by the name of the source file.
    std::map<std::wstring, std::wstring> Bad() const {
        std::map<std::wstring, std::wstring> bad;
        for (const TReport& report : reports_) {
            if (report.kind == TMessagePos::Error) {
                bad[std::wstring(FileNamePart(report.text))] = report.reason;
            }
        }
        return bad;
    }

    bool SaysInGrey(std::wstring_view what) const {
        return std::ranges::any_of(Texts(TMessagePos::Ignore), [&](const std::wstring& text) {
            return text.find(what) != std::wstring::npos;
        });
    }
};

TEST_F(Check, FindsEveryDamageAndNothingElse) {
    std::mt19937 random(20261123);
    std::map<std::wstring, std::string> files;
    std::wstring folder;
    for (int number = 0; number < 60; ++number) {
        if (number % 10 == 0) {
            folder += L"Ordner " + std::to_wstring(number) + L" mit einem langen Namen ä 中 " +
                      std::wstring(40, L'x') + L"\\";
        }
        std::string content(random() % 5 == 0 ? (2 << 20) + random() % 3 - 1 : 20 + random() % 3000, '\0');
        std::ranges::generate(content, [&] { return static_cast<char>(random()); });
        const std::wstring path = folder + L"f" + std::to_wstring(number);
        source_.Write(path, content, TestTime(number));
        files[path] = content;
    }
    AddSource(source_.Path());
    Run();
    Run(kCheck);
    EXPECT_TRUE(finished_ && Bad().empty() && Dm().ExitCode() == TExitCode::AllCopied);
    EXPECT_TRUE(SaysInGrey(L"60 Dateien angesehen, 60 Kopien gut"));

    std::map<std::wstring, std::wstring> expected;
    int kind = 0;
    TKernelHandle held;
    for (auto& [path, content] : files) {
        const std::wstring copy = CopyOf(path);
        const std::wstring full = ExtendedPath(destination_.At(copy));
        const FILETIME date =
            QueryAttributes(SystemPlatformCalls(), destination_.At(copy)).data.ftLastWriteTime;
        const std::wstring name(FileNamePart(path));
        std::string damaged = content;
        const std::size_t at = random() % content.size();
        switch (kind++) {
            case 0:
                DeleteFileW(full.c_str());
                expected[name] = L"Die Kopie fehlt";
                continue;
            case 1:
                DeleteFileW(full.c_str());
                CreateDirectoryW(full.c_str(), nullptr);
                expected[name] = L"An der Stelle der Kopie liegt ein Ordner";
                continue;
            case 2:
                held = TKernelHandle(
                    CreateFileW(full.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
                expected[name] = L"Die Kopie kann nicht gelesen werden";
                continue;
            case 3:
                damaged.pop_back();
                expected[name] = L"Die Kopie hat eine andere Größe: " + std::to_wstring(content.size() - 1);
                break;
            case 4:
                damaged += 'x';
                expected[name] = L"Die Kopie hat eine andere Größe: " + std::to_wstring(content.size() + 1);
                break;
            case 5:
                source_.Write(path, content, TestTime(1000));
                continue;  // newer: the next run copies it
            case 6:
                std::ranges::fill(damaged, '\0');
                expected[name] = L"Die Kopie hat ab Byte ";
                break;
            default:
                if (kind > 30) {
                    continue;
                }
                damaged[at] = static_cast<char>(damaged[at] ^ 1 << random() % 8);
                expected[name] = L"Die Kopie hat ab Byte " + std::to_wstring(at + 1) + L" einen";
                break;
        }
        // With the copy's old date, or as saved by somebody today.
        destination_.Write(copy, damaged, kind % 5 == 0 ? TestTime(9999) : date);
    }
    source_.Write(L"came today", "x", TestTime(0));
    const auto before = Destination();
    Run(kCheck);
    auto bad = Bad();
    for (const auto& [name, reason] : expected) {
        EXPECT_EQ(bad[name].substr(0, reason.size()), reason) << ToUtf8(name);
    }
    EXPECT_EQ(bad.size(), expected.size());
    EXPECT_TRUE(SaysInGrey(L", 2 noch zu kopieren"));
    EXPECT_EQ(Dm().ExitCode(), TExitCode::BadCopies);
    held.Reset();
    EXPECT_TRUE(Destination() == before) << "a check changes nothing";

    RemoveDirectoryW(ExtendedPath(destination_.At(CopyOf(std::next(files.begin())->first))).c_str());
    Run({.copy = false, .check = TCheckOrder{.repair = true}});
    bad = Bad();
    EXPECT_EQ(bad.size(), expected.size() - 1) << "all but the one that was held open";
    EXPECT_EQ(Dm().ExitCode(), TExitCode::BadCopies);
    const auto after = Destination();
    for (const auto& [path, content] : before) {
        const bool wasBad = content != "folder" && bad.contains(std::wstring(FileNamePart(path)));
        const auto kept = after.find(wasBad ? path + L" #001" : path);
        EXPECT_TRUE(path.ends_with(L".dat") || content == "folder" ||
                    (kept != after.end() && kept->second == content))
            << ToUtf8(path);
    }
    Run(kCheck);
    EXPECT_TRUE(Bad().empty() && Dm().ExitCode() == TExitCode::AllCopied);
}

TEST_F(Check, AFailingCallMakesNoBadCopyGood) {
    for (const wchar_t* name : {L"a.txt", L"sub\\bad.txt", L"sub\\c.txt"}) {
        source_.Write(name, "content", TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    const std::wstring bad = CopyOf(L"sub\\bad.txt");
    const std::wstring aside = CopyOf(L"sub\\bad #001.txt");
    destination_.Write(bad, "c0ntent", TestTime(0));
    dm_.reset();
    calls_ = TWatchedCalls::Table();
    UseMovedClock(calls_);
    const auto before = Destination();
    int failed = 0;
    const auto failEachCall = [&](DWORD error, bool repair) {
        bool reached = true;
        for (int failing = 0; reached && !HasFailure(); ++failing) {
            dm_.reset();
            AddSource(source_.Path());
            std::atomic<int> calls = 0;
            {
                const TWatchedCalls watch([&](const char* call, std::wstring_view) -> DWORD {
                    // A check writes its log only, and closes what it has read.
                    const bool matters =
                        call != std::string_view("WriteFile") && call != std::string_view("CloseHandle");
                    return matters && calls++ == failing ? error : ERROR_SUCCESS;
                });
                Run({.copy = false, .check = TCheckOrder{.repair = repair}});
            }
            reached = calls > failing;
            failed += reached ? 1 : 0;
            EXPECT_TRUE(Bad().contains(L"bad.txt") || Dm().ExitCode() != TExitCode::AllCopied)
                << "call " << failing << ", error " << error;
            EXPECT_FALSE(SaysInGrey(L"3 Kopien gut"));
            const bool isKept = destination_.Read(bad) == "c0ntent" || destination_.Read(aside) == "c0ntent";
            EXPECT_TRUE(isKept && destination_.Read(CopyOf(L"a.txt")) == "content" &&
                        destination_.Read(CopyOf(L"sub\\c.txt")) == "content")
                << "call " << failing << ", error " << error;
            if (repair) {
                DeleteFileW(destination_.At(aside).c_str());
                destination_.Write(bad, "c0ntent", TestTime(0));
            }
        }
    };
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_NETNAME_DELETED, ERROR_INVALID_PARAMETER}) {
        failEachCall(error, false);
    }
    EXPECT_GT(failed, 100);
    EXPECT_TRUE(Destination() == before);
    failEachCall(ERROR_NETNAME_DELETED, true);
}

TEST_F(Check, ANasThatGoesAwayIsToldOnce) {
    for (int number = 0; number < 300; ++number) {
        source_.Write(L"d\\f" + std::to_wstring(number), "x", TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    const std::wstring nas = FoldedCase(destination_.Path());
    calls_ = TWatchedCalls::Table();
    UseMovedClock(calls_);
    for (const DWORD error : {ERROR_NETNAME_DELETED, ERROR_PATH_NOT_FOUND}) {
        std::atomic<int> opened = 0;
        std::atomic<int> refused = 0;
        const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
            const std::wstring folded = FoldedCase(path);
            const bool isCopy = folded.find(nas) != std::wstring::npos;
            if (isCopy && call == std::string_view("CreateFile") &&
                folded.find(L"\\D\\F") != std::wstring::npos) {
                ++opened;
            }
            return isCopy && opened > 50 ? ++refused, error : ERROR_SUCCESS;
        });
        Run(kCheck);
        EXPECT_EQ(Texts(TMessagePos::Error).size(), 1U);
        EXPECT_TRUE(Texts(TMessagePos::Error).at(0).starts_with(L"Die Prüfung wurde abgebrochen: "));
        EXPECT_EQ(Dm().ExitCode(), TExitCode::NotAllCopied);
        EXPECT_LT(refused, 60 + 3 * 300);
    }
}

TEST_F(Check, AStopEndsItWithTheFilesUnderWay) {
    for (int number = 0; number < 300; ++number) {
        source_.Write(L"f" + std::to_wstring(number), "x", TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    calls_ = TWatchedCalls::Table();
    std::atomic<int> read = 0;
    const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
        if (call == std::string_view("CreateFile") && path.find(L"drive_") != std::wstring_view::npos) {
            ++read;
            Sleep(20);
        }
        return ERROR_SUCCESS;
    });
    Dm().StartCopy(kCheck);
    for (int step = 0; step < 5000 && read < 5; ++step) {
        Sleep(1);
        ProcessPendingMessages();
    }
    EndRun();
    EXPECT_LT(read, 40) << "of 300";
    EXPECT_TRUE(SaysInGrey(L"Prüfung, nicht beendet: "));
    EXPECT_EQ(Dm().ExitCode(), TExitCode::NotAllCopied);
}

TEST_F(Check, ASourceThatChangesIsLookedAtOnceMore) {
    source_.Write(L"log.txt", "one", TestTime(0));
    AddSource(source_.Path());
    Run();
    calls_ = TWatchedCalls::Table();
    UseMovedClock(calls_);
    {
        std::atomic<bool> isRead = false;
        std::atomic<bool> changed = false;
        const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
            isRead = isRead || path.ends_with(L"log.txt");
            if (isRead && call == std::string_view("ReadFile") && !changed.exchange(true)) {
                // Older than its copy, so that no run would copy it.
                source_.Write(L"log.txt", "one", TestTime(-10));
            }
            return ERROR_SUCCESS;
        });
        Run(kCheck);
        EXPECT_TRUE(changed && SaysInGrey(L"1 Kopie gut"));
    }
    std::atomic<int> seconds = 0;
    const TWatchedCalls watch([&](const char* call, std::wstring_view) -> DWORD {
        if (call == std::string_view("ReadFile")) {
            source_.Write(L"log.txt", "one", TestTime(-100 - ++seconds));
        }
        return ERROR_SUCCESS;
    });
    Run(kCheck);
    EXPECT_TRUE(SaysInGrey(L"In Benutzung und nicht geprüft: ") && SaysInGrey(L", 1 in Benutzung"));
    EXPECT_TRUE(Bad().empty());
}

TEST_F(Check, ReadsThroughTheCachesWhereItMust) {
    std::string content(700'000, 'x');
    for (const wchar_t* name : {L"good.bin", L"tail.bin", L"small.bin"}) {
        source_.Write(name, name[0] == L's' ? "small" : content, TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    content.back() = 'y';
    destination_.Write(CopyOf(L"tail.bin"), content, TestTime(0));
    dm_.reset();
    calls_.CreateFileW = &OpenThere;
    calls_.ReadFile = &ReadThere;
    AddSource(source_.Path());
    for (const bool atOnce : {true, false}) {
        refusesAtOnce = atOnce;
        Run(kCheck);
        EXPECT_TRUE(SaysInGrey(L"3 Dateien angesehen, 2 Kopien gut")) << atOnce;
        EXPECT_EQ(Bad()[L"tail.bin"], L"Die Kopie hat ab Byte 700000 einen anderen Inhalt") << atOnce;
    }
    EXPECT_EQ(refusals, 2) << "the small one came in one piece";
}

TEST_F(Check, TheOnlyGoodFileIsNeverGivenUp) {
    for (const wchar_t* name : {L"unreadable", L"refused", L"cloud"}) {
        source_.Write(name, "content", TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    for (const wchar_t* name : {L"unreadable", L"refused", L"cloud"}) {
        destination_.Write(CopyOf(name), "c0ntent", TestTime(0));
    }
    const auto before = Destination();
    dm_.reset();
    calls_ = TWatchedCalls::Table();
    calls_.FindNextFileW = [](HANDLE find, LPWIN32_FIND_DATAW data) -> BOOL {
        const BOOL found = FindNextFileW(find, data);
        if (found && data->cFileName == std::wstring_view(L"cloud")) {
            data->dwFileAttributes |= FILE_ATTRIBUTE_OFFLINE;
        }
        return found;
    };
    UseMovedClock(calls_);
    AddSource(source_.Path());
    std::atomic<bool> wasFetched = false;
    const TWatchedCalls watch([&](const char* call, std::wstring_view path) -> DWORD {
        if (path.ends_with(L"cloud")) {
            wasFetched = wasFetched || call == std::string_view("CreateFile");
        }
        const bool isSource = path.find(source_.Path()) != std::wstring_view::npos;
        const bool fails = (call == std::string_view("CreateFile") && path.ends_with(L"unreadable")) ||
                           (call == std::string_view("CopyFileEx") && path.ends_with(L"refused"));
        return isSource && fails ? ERROR_CRC : ERROR_SUCCESS;
    });
    Run({.copy = false, .check = TCheckOrder{.repair = true}});
    EXPECT_TRUE(SaysInGrey(L"1 Datei angesehen, 0 Kopien gut, 1 schlecht, 1 nur in der Cloud"));
    EXPECT_TRUE(!wasFetched && Bad().contains(L"refused") && !Bad().contains(L"unreadable"));
    EXPECT_EQ(Dm().Failures().others, 1U) << "a source that cannot be read is told";
    EXPECT_EQ(Dm().ExitCode(), TExitCode::BadCopies);
    const auto after = Destination();
    for (const auto& [path, content] : before) {
        EXPECT_TRUE(after.contains(path) && (path.ends_with(L".dat") || after.at(path) == content))
            << ToUtf8(path);
    }
    for (const auto& [path, content] : after) {
        EXPECT_EQ(path.find(L" #001"), std::wstring::npos) << ToUtf8(path);
    }
}

TEST_F(Check, WhatCouldNotBeCopiedIsNotRepaired) {
    source_.Write(L"a.txt", "old", TestTime(0));
    AddSource(source_.Path());
    Run();
    source_.Write(L"a.txt", "new", TestTime(1000));
    dm_.reset();
    calls_ = TWatchedCalls::Table();
    UseMovedClock(calls_);
    AddSource(source_.Path());
    std::atomic<int> attempts = 0;
    const TWatchedCalls watch([&](const char* call, std::wstring_view) -> DWORD {
        return call == std::string_view("CopyFileEx") && ++attempts <= 2 ? ERROR_DISK_FULL : ERROR_SUCCESS;
    });
    AddSource(destination_.Path() + L"\\" + HostName());
    Run({.copy = true, .check = TCheckOrder{.repair = true}});
    EXPECT_EQ(Dm().Failures().others, 1U) << "what both see of the way is told once";
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(Dm().Failures().files, 1U);
    EXPECT_TRUE(SaysInGrey(L", 1 noch zu kopieren"));
    EXPECT_EQ(Dm().ExitCode(), TExitCode::NotAllCopied);
}

TEST_F(Check, MakesNoBackupWhereNoneIs) {
    source_.Write(L"a.txt", "content", TestTime(0));
    AddSource(source_.Path());
    for (const bool repair : {false, true}) {
        Run({.copy = false, .check = TCheckOrder{.repair = repair}});
        EXPECT_TRUE(Destination().empty() && Dm().ExitCode() == TExitCode::NotAllCopied);
    }
}

TEST_F(Check, PartByPartSeesEveryFileWhateverWasRemembered) {
    const std::wstring remembered = configuration_ + L"\\NASSeen.ini";
    std::set<std::wstring> all;
    for (int number = 0; number < 40; ++number) {
        const std::wstring name = L"f" + std::to_wstring(number);
        all.insert(name);
        source_.Write(name, "content", TestTime(0));
    }
    AddSource(source_.Path());
    Run();
    for (const std::wstring& name : all) {
        destination_.Write(CopyOf(name), "c0ntent", TestTime(0));
    }
    const TRunOrder part{.copy = false, .check = TCheckOrder{.percent = 30}};
    for (const char* damage :
         {"", "\xff\xfe[CHECKS", "[CHECKS]\r\n[TABLES\r\n=\r\n\x01\x02", "[CHECKS]\r\nx=-7"}) {
        if (*damage != '\0') {
            std::ofstream(std::filesystem::path(remembered), std::ios::binary) << damage;
        }
        std::set<std::wstring> seen;
        std::size_t told = 0;
        for (int night = 0; night < 4; ++night) {
            Run(part);
            told += Bad().size();
            for (const auto& [name, reason] : Bad()) {
                seen.insert(name);
            }
        }
        EXPECT_TRUE(seen == all) << damage;
        EXPECT_LT(told, 60U) << "others each time";
    }
    // Night after night the same part would pass for all of it.
    CreateDirectoryW((remembered + L".new").c_str(), nullptr);
    Run(part);
    RemoveDirectoryW((remembered + L".new").c_str());
    EXPECT_EQ(Dm().Failures().others, 1U);
    EXPECT_TRUE(Texts(TMessagePos::Error).back().find(L"NASSeen.ini\" konnte nicht gespeichert werden") !=
                std::wstring::npos);
}

}  // namespace
