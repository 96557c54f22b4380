// What whole runs cost beside the bare calls they need.
//
//   run_bench copy SOURCE NAS ROUNDS    many small files with the window on the screen
//   run_bench calls SOURCE NAS          calls to the destination, per file copied and per file unchanged, and
//                                       what they would take where each lasts a millisecond
//   run_bench slept SOURCE NAS ROUNDS   a whole first run with eight files at a time and with one, without a
//                                       window; each call to the destination lasts 2 ms longer
//   run_bench first SOURCE NAS ROUNDS
//                                       a whole first run without a window, and the bare calls of its folders
//                                       and safe copies, eight at a time: for a NAS that is slow by itself
//   run_bench large FILE NAS ROUNDS     one large file
//   run_bench flush SOURCE NAS ROUNDS [MILLISECONDS]
//                                       what waiting for the disk costs, one and eight files at a time; each
//                                       call lasts that much longer
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/main_window.h"
#include "engine/safe_copy.h"
#include "far_calls.h"
#include "hashdb/destination_folder.h"
#include "measure.h"
#include "support/folder_listing.h"
#include "support/system_helpers.h"
#include "support/text.h"
#include "test_folder.h"
#include "watched_calls.h"

namespace {

constexpr double kFarCall = 0.001;  // seconds

class TNoWindows final : public TCompanionWindows {
public:
    void ShowConfiguration(HWND) override {}
    bool CloseConfiguration() override { return true; }
    bool CloseConfigurationForRun() override { return true; }
    void CheckForUpdate(bool, std::function<void()>) override {}
    bool NewUpdateExists() const override { return false; }
    void CloseAllNow() override {}
};

// One run of the program's own parts; the waits of the copy timer are left out.
class TMeasuredRun {
public:
    TMeasuredRun(const TPlatformCalls& calls, const std::wstring& source, const std::wstring& nas,
                 unsigned parallel = 8)
        : dataModule_(calls) {
        std::ofstream settings(
            std::filesystem::path(ConfigurationFolder(SystemPlatformCalls()) + L"\\NASConf.ini"),
            std::ios::binary);
        settings << "[CONFIG]\r\nNASDIR=" << ToUtf8(nas) << "\r\nPARALLEL=" << parallel << "\r\n";
        settings.close();
        static_cast<void>(CreateFolders(SystemPlatformCalls(), nas));
        dataModule_.DataModuleCreate();
        dataModule_.MemData.Assign({});
        dataModule_.MemData.Append();
        SourceFolderRow& row = dataModule_.MemData.Working();
        row.Aktive = row.Rekursiv = true;
        row.Directory = source;
        row.ExtensionMode = L"NO";
        dataModule_.MemData.Post();
    }

    double WithoutWindow() {
        dataModule_.SetMessage = [](TDM&, const std::wstring&, TMessagePos, const std::wstring&) {};
        dataModule_.DoNasFinishMsg = [](TDM& finished) { finished.SaveNasData(); };
        return Measure([this] { dataModule_.StartCopy(); });
    }

    double WithWindow() {
        TNoWindows windows;
        TfmMain window(SystemPlatformCalls(), {});
        window.FormCreate();
        window.Show(dataModule_, windows);
        ProcessPendingMessages();
        return Measure([&window] { window.acStartCopy.Execute(); });
    }

private:
    double Measure(const std::function<void()>& start) {
        return SecondsOf([&] {
            start();
            while (!CopyIdle) {
                ProcessPendingMessages();
                dataModule_.CopyTimerTimer();
            }
        });
    }

    TDM dataModule_;
};

struct TBareCopy {
    std::wstring source;
    std::wstring target;
    std::int64_t size;
    FILETIME created, accessed, written;
};

// The files of a tree and where a bare copy puts them; the folders they land in.
void Collect(const std::wstring& folder, const std::wstring& target, std::vector<TBareCopy>& copies,
             std::vector<std::wstring>& targets) {
    targets.push_back(target);
    TFolderListing listing(SystemPlatformCalls(), folder);
    while (listing.Next()) {
        const WIN32_FIND_DATAW& entry = listing.Entry();
        const std::wstring name = std::wstring(L"\\") + entry.cFileName;
        if (IsFolder(entry)) {
            Collect(folder + name, target + name, copies, targets);
        } else {
            copies.push_back({folder + name, target + name, entry.nFileSizeLow, entry.ftCreationTime,
                              entry.ftLastAccessTime, entry.ftLastWriteTime});
        }
    }
}

// The same, in folders that exist.
void Collect(const std::wstring& folder, const std::wstring& target, std::vector<TBareCopy>& copies) {
    std::vector<std::wstring> targets;
    Collect(folder, target, copies, targets);
    for (const std::wstring& made : targets) {
        static_cast<void>(CreateFolders(SystemPlatformCalls(), made));
    }
}

// The calls that one safe copy needs, and nothing around them.
void CopyBarely(const TBareCopy& copy) {
    const std::wstring temporary = copy.target + L"~";
    CopyFileExW(copy.source.c_str(), temporary.c_str(), nullptr, nullptr, nullptr,
                COPY_FILE_OPEN_SOURCE_FOR_WRITE);
    const HANDLE file = CreateFileW(temporary.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES | DELETE,
                                    FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    SetFileTime(file, &copy.created, &copy.accessed, &copy.written);
    FlushFileBuffers(file);
    std::vector<std::byte> request(sizeof(FILE_RENAME_INFO) + copy.target.size() * sizeof(wchar_t));
    auto* rename = reinterpret_cast<FILE_RENAME_INFO*>(request.data());
    rename->ReplaceIfExists = TRUE;
    rename->FileNameLength = static_cast<DWORD>(copy.target.size() * sizeof(wchar_t));
    copy.target.copy(static_cast<wchar_t*>(rename->FileName), copy.target.size());
    SetFileInformationByHandle(file, FileRenameInfo, rename, static_cast<DWORD>(request.size()));
    CloseHandle(file);
}

void MeasureCopies(const std::wstring& source, const std::wstring& nas, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        const std::wstring place = nas + L"\\ROUND" + std::to_wstring(round);
        std::vector<TBareCopy> copies;
        Collect(source, DestinationOfFilesIn(place + L"\\BARE", HostName(), source), copies);
        const double perFile = 1e6 / static_cast<double>(copies.size());
        Tell("copy", "floor", SecondsOf([&] {
                                  for (const TBareCopy& copy : copies) {
                                      CopyBarely(copy);
                                  }
                              }) * perFile);
        for (const bool several : {round % 2 == 0, round % 2 != 0}) {
            const std::wstring target = place + (several ? L"\\OURS" : L"\\SOLO");
            TMeasuredRun run(SystemPlatformCalls(), source, target, several ? 8 : 1);
            Tell("copy", several ? "ours" : "one", run.WithWindow() * perFile);
        }
    }
}

// Every call of the table lasts so much longer.
TWatchedCalls Slowly(DWORD milliseconds) {
    return TWatchedCalls([milliseconds](const char*, std::wstring_view) -> DWORD {
        if (milliseconds != 0) {
            Sleep(milliseconds);
        }
        return ERROR_SUCCESS;
    });
}

void MeasureSlept(const std::wstring& source, const std::wstring& nas, int rounds) {
    farPart = nas;
    const TPlatformCalls calls = SleepingCalls();
    for (int round = 0; round < rounds; ++round) {
        const std::wstring place = nas + L"\\SLEPT" + std::to_wstring(round);
        for (const bool several : {round % 2 == 0, round % 2 != 0}) {
            TMeasuredRun run(calls, source, place + (several ? L"\\OURS" : L"\\SOLO"), several ? 8 : 1);
            Tell("slept_run", several ? "ours" : "one", run.WithoutWindow());
        }
    }
}

void MeasureFirstRun(const std::wstring& source, const std::wstring& nas, int rounds) {
    constexpr std::size_t kThreads = 8;
    for (int round = 0; round < rounds; ++round) {
        const std::wstring place = nas + L"\\FIRST" + std::to_wstring(round);
        std::vector<TBareCopy> copies;
        std::vector<std::wstring> targets;
        const std::wstring top = DestinationOfFilesIn(place + L"\\BARE", HostName(), source);
        Collect(source, top, copies, targets);
        static_cast<void>(CreateFolders(SystemPlatformCalls(), top));
        const auto makeBarely = [&] {
            for (const std::wstring& folder : targets) {
                CreateDirectoryW(folder.c_str(), nullptr);
            }
            std::vector<std::jthread> running;
            for (std::size_t thread = 0; thread < kThreads; ++thread) {
                running.emplace_back([&, thread] {
                    for (std::size_t index = thread; index < copies.size(); index += kThreads) {
                        CopyBarely(copies[index]);
                    }
                });
            }
        };
        Tell("first_run", "floor", SecondsOf(makeBarely));
        Tell("first_run", "ours",
             TMeasuredRun(SystemPlatformCalls(), source, place + L"\\OURS", kThreads).WithoutWindow());
    }
}

void MeasureLargeCopy(const std::wstring& file, const std::wstring& nas, int rounds) {
    const std::wstring target = nas + L"\\LARGE";
    const TAttributes attributes = QueryAttributes(SystemPlatformCalls(), file);
    const TFileTimes times = attributes.Times();
    const auto copyBarely = [&] {
        CopyBarely({file, target, attributes.Size(), times.creation, times.lastAccess, times.lastWrite});
    };
    TDestinationTraits traits;
    const auto copySafely = [&] {
        static_cast<void>(
            CopyFileSafely(SystemPlatformCalls(), traits,
                           {.source = file, .target = target, .size = attributes.Size(), .times = &times}));
    };
    // Who comes first in a round gets the memory that was free for longer: they take turns.
    for (int turn = 0; turn < 2 * rounds; ++turn) {
        DeleteFileW(target.c_str());
        if (turn % 4 == 0 || turn % 4 == 3) {
            Tell("large", "floor", SecondsOf(copyBarely));
        } else {
            Tell("large", "ours", SecondsOf(copySafely));
        }
    }
    DeleteFileW(target.c_str());
}

// All files copied safely by so many threads; the seconds it took.
double CopySafely(const TPlatformCalls& calls, const std::vector<TBareCopy>& copies, std::size_t threads) {
    TDestinationTraits traits;
    return SecondsOf([&] {
        std::vector<std::jthread> running;
        for (std::size_t thread = 0; thread < threads; ++thread) {
            running.emplace_back([&, thread] {
                for (std::size_t index = thread; index < copies.size(); index += threads) {
                    const TBareCopy& copy = copies[index];
                    const TFileTimes times{copy.created, copy.accessed, copy.written};
                    static_cast<void>(CopyFileSafely(
                        calls, traits,
                        {.source = copy.source, .target = copy.target, .size = copy.size, .times = &times}));
                }
            });
        }
    });
}

void MeasureFlush(const std::wstring& source, const std::wstring& nas, int rounds, DWORD milliseconds) {
    const TWatchedCalls slow = Slowly(milliseconds);
    const TPlatformCalls& flushing = TWatchedCalls::Table();
    TPlatformCalls careless = flushing;
    careless.FlushFileBuffers = [](HANDLE) { return TRUE; };
    for (int round = 0; round < rounds; ++round) {
        for (const std::size_t threads : {std::size_t{1}, std::size_t{8}}) {
            const std::string row = "flush_" + std::to_string(threads);
            const std::wstring place =
                nas + L"\\FLUSH" + std::to_wstring(round) + L"-" + std::to_wstring(threads);
            for (const bool flushes : {round % 2 == 0, round % 2 != 0}) {
                std::vector<TBareCopy> copies;
                Collect(source, place + (flushes ? L"\\OURS" : L"\\BARE"), copies);
                const double seconds = CopySafely(flushes ? flushing : careless, copies, threads);
                Tell(row.c_str(), flushes ? "ours" : "floor",
                     seconds * 1e6 / static_cast<double>(copies.size()));
            }
        }
    }
}

// Counts the calls that go to the destination.
class TDestinationCalls {
public:
    explicit TDestinationCalls(const std::wstring& nas)
        : watch_([this, nas](const char* call, std::wstring_view path) { return Count(call, path, nas); }) {}

    // Lets the listings of the destination fail, so that the scan asks for every file.
    void RefuseListings() { refuseListings_ = true; }

    std::size_t Total() {
        std::size_t total = 0;
        for (const auto& [call, count] : counts_) {
            total += count;
        }
        return total;
    }
    // A listing that fits into one buffer is asked for twice: for the entries, and for their end.
    double FarSeconds() { return static_cast<double>(Total() + counts_["FindFirstFileEx"]) * kFarCall; }
    void Print(const char* what) {
        std::printf("%s:", what);
        for (const auto& [call, count] : counts_) {
            std::printf(" %s %zu", call.c_str(), count);
        }
        std::puts("");
    }
    void Clear() { counts_.clear(); }

private:
    DWORD Count(const std::string& call, std::wstring_view path, const std::wstring& nas) {
        // Of a copy only the source is told, and calls by handle tell no path: but for listings, which go on
        // in their buffer, those are all about files of the destination.
        const bool byHandle = path.empty() && call != "FindNextFile";
        if (!byHandle && call != "CopyFileEx" && path.find(nas) == std::wstring_view::npos) {
            return ERROR_SUCCESS;
        }
        const std::scoped_lock lock(mutex_);
        ++counts_[call];
        return refuseListings_ && call == "FindFirstFileEx" ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    }

    std::mutex mutex_;
    std::map<std::string, std::size_t> counts_;
    bool refuseListings_ = false;
    TWatchedCalls watch_;
};

void MeasureCalls(const std::wstring& source, const std::wstring& nas) {
    const std::wstring place = nas + L"\\CALLS";
    std::vector<TBareCopy> files;
    Collect(source, place + L"\\BARE", files);
    const auto count = static_cast<double>(files.size());
    TDestinationCalls calls(place + L"\\OURS");
    const auto run = [&] {
        calls.Clear();
        return TMeasuredRun(TWatchedCalls::Table(), source, place + L"\\OURS").WithoutWindow();
    };
    run();
    calls.Print("a run that copies all");
    Tell("calls_copied", "ours", static_cast<double>(calls.Total()) / count);
    const double seconds = run();
    calls.Print("a run that copies nothing");
    Tell("calls_unchanged", "ours", static_cast<double>(calls.Total()) / count);
    Tell("far", "ours", seconds + calls.FarSeconds());
    calls.RefuseListings();
    const double plainSeconds = run();
    calls.Print("the same with a question per file");
    Tell("far", "peer", plainSeconds + calls.FarSeconds());
}

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    const std::wstring mode = count > 3 ? arguments[1] : L"";
    const int rounds = count > 4 ? _wtoi(arguments[4]) : 0;
    const DWORD milliseconds = count > 5 ? static_cast<DWORD>(_wtoi(arguments[5])) : 0;
    if (mode == L"copy") {
        MeasureCopies(arguments[2], arguments[3], rounds);
    } else if (mode == L"large") {
        MeasureLargeCopy(arguments[2], arguments[3], rounds);
    } else if (mode == L"calls") {
        MeasureCalls(arguments[2], arguments[3]);
    } else if (mode == L"flush") {
        MeasureFlush(arguments[2], arguments[3], rounds, milliseconds);
    } else if (mode == L"slept") {
        MeasureSlept(arguments[2], arguments[3], rounds);
    } else if (mode == L"first") {
        MeasureFirstRun(arguments[2], arguments[3], rounds);
    } else {
        std::fputs("usage: run_bench copy|large|calls|flush|slept|first SOURCE NAS [ROUNDS] [MILLISECONDS]\n",
                   stderr);
        return 64;
    }
    return 0;
}
