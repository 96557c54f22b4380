// What deciding costs a run in which nothing changed. Trees and hash table are there already.
//
//   scan_bench SOURCE NAS HOST ROUNDS    the scan, its floor (the bare listings) and the hashing alone
//   scan_bench SOURCE NAS HOST once      one scan and nothing else, to be timed from outside
//   scan_bench SOURCE NAS HOST far       one scan that lists eight folders at a time, one that lists each in
//   its
//                                        turn, and the bare listings of the destination, eight at a time
//   scan_bench SOURCE NAS HOST slept     the two scans, each call to list the destination 2 ms longer
#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "engine/scan_folders.h"
#include "far_calls.h"
#include "hashdb/destination_folder.h"
#include "hashdb/hash_table_file.h"
#include "measure.h"
#include "support/folder_listing.h"
#include "support/path_hash.h"

namespace {

struct TTrees {
    std::wstring source;
    std::wstring nas;
    std::wstring host;
};

// The bare listing of one folder, its files or its folders handed on.
template <typename Found>
void List(const std::wstring& folder, bool folders, Found found) {
    WIN32_FIND_DATAW entry;
    const HANDLE find = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (find == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("a folder cannot be listed");
    }
    do {
        if (entry.cFileName[0] != L'.' && IsFolder(entry) == folders) {
            found(entry.cFileName);
        }
    } while (FindNextFileW(find, &entry));
    FindClose(find);
}

void Collect(const std::wstring& folder, std::vector<std::wstring>& folders) {
    folders.push_back(folder);
    List(folder, true, [&](const wchar_t* name) { Collect(folder + L"\\" + name, folders); });
}

// Each source folder twice, to collect and to scan, its destination once. Answers the files' number.
std::size_t ListAll(const TTrees& trees) {
    std::vector<std::wstring> folders;
    Collect(trees.source, folders);
    std::size_t files = 0;
    for (const std::wstring& folder : folders) {
        List(DestinationOfFilesIn(trees.nas, trees.host, folder), false, [](const wchar_t*) {});
        List(folder, false, [&files](const wchar_t*) { ++files; });
    }
    return files;
}

std::vector<std::wstring> AllFiles(const TTrees& trees) {
    std::vector<std::wstring> folders;
    std::vector<std::wstring> files;
    Collect(trees.source, folders);
    for (const std::wstring& folder : folders) {
        List(folder, false, [&](const wchar_t* name) { files.push_back(folder + L"\\" + name); });
    }
    return files;
}

// The program's own scan, as its task runs it.
double SecondsOfScan(const TTrees& trees, const THashTable& table, const TReadAhead& readAhead = {},
                     const TPlatformCalls& calls = SystemPlatformCalls()) {
    SourceFolderRow row;
    row.Aktive = row.Rekursiv = true;
    row.Directory = trees.source;
    row.ExtensionMode = L"NO";
    const TScanParameters parameters{.dataSet = std::make_shared<const std::vector<SourceFolderRow>>(1, row),
                                     .nasData = table.Snapshot(),
                                     .nas = trees.nas,
                                     .host = trees.host,
                                     .readAhead = readAhead};
    double seconds = 0;
    TOmniEventMonitor monitor([] {});
    monitor.OnTaskMessage = [](IOmniTask&, const TTaskMessage& message) {
        const auto what = static_cast<TScanMessage>(message.identifier);
        if (what == TScanMessage::FilesToCopy || what == TScanMessage::Problem) {
            throw std::runtime_error("something had to be copied, or was not read");
        }
    };
    monitor.OnTaskTerminated = [](IOmniTask&) {};
    IOmniTaskControl task(
        [&](IOmniTask& own) { seconds = SecondsOf([&] { TFolderScan(own, calls, parameters).Run(); }); },
        L"scan");
    task.MonitorWith(monitor);
    task.Run();
    task.WaitFor(kUnlimitedWait);
    monitor.Deliver();
    return seconds;
}

void Measure(const TTrees& trees, const THashTable& table, int rounds) {
    const std::vector<std::wstring> files = AllFiles(trees);
    const double perFile = 1e6 / static_cast<double>(files.size());
    for (; rounds > 0; --rounds) {
        Tell("scan", "floor", SecondsOf([&] { ListAll(trees); }) * perFile);
        Tell("scan", "ours", SecondsOfScan(trees, table) * perFile);
        Tell("scan", "hashing", SecondsOf([&] {
                                    for (const std::wstring& file : files) {
                                        static_cast<void>(PathDigest(file));
                                    }
                                }) * perFile);
    }
}

// The destination folders, so many at a time and nothing decided.
double SecondsOfListings(const TTrees& trees, std::size_t threads) {
    std::vector<std::wstring> folders;
    Collect(trees.source, folders);
    return SecondsOf([&] {
        std::vector<std::jthread> running;
        for (std::size_t thread = 0; thread < threads; ++thread) {
            running.emplace_back([&, thread] {
                for (std::size_t index = thread; index < folders.size(); index += threads) {
                    List(DestinationOfFilesIn(trees.nas, trees.host, folders[index]), false,
                         [](const wchar_t*) {});
                }
            });
        }
    });
}

void MeasureFar(const TTrees& trees, const THashTable& table) {
    Tell("far_scan", "ours", SecondsOfScan(trees, table));
    Tell("far_scan", "floor", SecondsOfListings(trees, 8));
    Tell("far_scan", "one", SecondsOfScan(trees, table, {.atATime = 1}));
}

void MeasureSlept(const TTrees& trees, const THashTable& table) {
    farPart = trees.nas;
    const TPlatformCalls calls = SleepingCalls();
    Tell("slept_scan", "ours", SecondsOfScan(trees, table, {}, calls));
    Tell("slept_scan", "one", SecondsOfScan(trees, table, {.atATime = 1}, calls));
}

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    if (count != 5) {
        std::fputs("usage: scan_bench SOURCE NAS HOST ROUNDS|once|far|slept\n", stderr);
        return 64;
    }
    const TTrees trees{arguments[1], arguments[2], arguments[3]};
    CreateHashContext();
    THashTable table;
    if (!LoadHashTable(SystemPlatformCalls(), trees.nas + L"\\" + trees.host + L"\\Vardeko.dat", table)) {
        std::fputs("there is no hash table\n", stderr);
        return 66;
    }
    const std::wstring_view mode = arguments[4];
    if (mode == L"once") {
        Tell("scan", "ours", SecondsOfScan(trees, table) * 1e6);
    } else if (mode == L"far") {
        MeasureFar(trees, table);
    } else if (mode == L"slept") {
        MeasureSlept(trees, table);
    } else {
        Measure(trees, table, _wtoi(arguments[4]));
    }
    return 0;
}
