// What a check of the backup costs, against bare reading of both sides. Trees and hash table are there
// already.
//
//   verify_bench SOURCE NAS HOST ROUNDS    the check, and bare reading
//   verify_bench SOURCE NAS HOST slept     checks of eight files at a time and of one, each call to the
//                                          destination 2 ms longer
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "engine/scan_folders.h"
#include "engine/verify_scan.h"
#include "far_calls.h"
#include "hashdb/destination_folder.h"
#include "hashdb/hash_table_file.h"
#include "measure.h"
#include "support/folder_listing.h"
#include "support/path_hash.h"

namespace {

constexpr std::size_t kAtATime = 8;
constexpr DWORD kBlock = 1024 * 1024;

struct TTrees {
    std::wstring source;
    std::wstring nas;
    std::wstring host;
};

struct TPair {
    std::wstring source;
    std::wstring copy;
};

void Collect(const TTrees& trees, const std::wstring& folder, std::vector<TPair>& pairs) {
    const std::wstring target = DestinationOfFilesIn(trees.nas, trees.host, folder);
    TFolderListing copies(SystemPlatformCalls(), target);
    while (copies.Next()) {
    }
    std::vector<std::wstring> folders;
    TFolderListing files(SystemPlatformCalls(), folder);
    while (files.Next()) {
        const std::wstring name = files.Entry().cFileName;
        if (IsFolder(files.Entry())) {
            folders.push_back(folder + L"\\" + name);
        } else {
            pairs.push_back({folder + L"\\" + name, target + L"\\" + name});
        }
    }
    for (const std::wstring& below : folders) {
        Collect(trees, below, pairs);
    }
}

void ReadBare(const std::wstring& path, std::vector<char>& block) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    LARGE_INTEGER size{};
    FILETIME written{};
    if (!GetFileSizeEx(file, &size) || !GetFileTime(file, nullptr, nullptr, &written)) {
        throw std::runtime_error("a file has no size and date");
    }
    DWORD read = 0;
    do {
        if (!ReadFile(file, block.data(), kBlock, &read, nullptr)) {
            throw std::runtime_error("a file cannot be read");
        }
    } while (read == kBlock);
    CloseHandle(file);
}

void ReadAllBare(const TTrees& trees) {
    std::vector<TPair> pairs;
    Collect(trees, trees.source, pairs);
    std::atomic<std::size_t> next = 0;
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < kAtATime; ++thread) {
        threads.emplace_back([&] {
            std::vector<char> block(kBlock);
            for (std::size_t index = next++; index < pairs.size(); index = next++) {
                ReadBare(pairs[index].source, block);
                ReadBare(pairs[index].copy, block);
            }
        });
    }
}

void Check(const TTrees& trees, const THashTable& table, std::size_t parallel = kAtATime,
           const TPlatformCalls& calls = SystemPlatformCalls()) {
    SourceFolderRow row;
    row.Aktive = row.Rekursiv = true;
    row.Directory = trees.source;
    row.ExtensionMode = L"NO";
    TVerifyCounts counts;
    TOmniEventMonitor monitor([] {});
    monitor.OnTaskMessage = [&counts](IOmniTask&, const TTaskMessage& message) {
        if (const auto* found = std::get_if<TVerifyCounts>(&message.value)) {
            counts = *found;
        }
    };
    monitor.OnTaskTerminated = [](IOmniTask&) {};
    IOmniTaskControl task(
        [&](IOmniTask& own) {
            TVerifyScan(own, calls,
                        {.dataSet = {row},
                         .nasData = table.Snapshot(),
                         .recordsAreKnown = true,
                         .nas = trees.nas,
                         .host = trees.host,
                         .slice = {},
                         .parallel = parallel,
                         .sourceRoots = std::make_shared<TSourceRoots>(calls)})
                .Run();
        },
        L"check");
    task.MonitorWith(monitor);
    task.Run();
    task.WaitFor(kUnlimitedWait);
    monitor.Deliver();
    if (!counts.isComplete || counts.files == 0 || counts.good != counts.files) {
        throw std::runtime_error("the copies are not all good");
    }
}

void MeasureSlept(const TTrees& trees, const THashTable& table) {
    farPart = trees.nas;
    const TPlatformCalls calls = SleepingCalls();
    Tell("slept_check", "ours", SecondsOf([&] { Check(trees, table, kAtATime, calls); }));
    Tell("slept_check", "one", SecondsOf([&] { Check(trees, table, 1, calls); }));
}

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    if (count != 5) {
        std::fputs("usage: verify_bench SOURCE NAS HOST ROUNDS|slept\n", stderr);
        return 64;
    }
    const TTrees trees{arguments[1], arguments[2], arguments[3]};
    CreateHashContext();
    THashTable table;
    if (!LoadHashTable(SystemPlatformCalls(), trees.nas + L"\\" + trees.host + L"\\Vardeko.dat", table)) {
        std::fputs("there is no hash table\n", stderr);
        return 66;
    }
    if (arguments[4] == std::wstring_view(L"slept")) {
        MeasureSlept(trees, table);
        return 0;
    }
    for (int round = _wtoi(arguments[4]); round > 0; --round) {
        Tell("check", "floor", SecondsOf([&] { ReadAllBare(trees); }));
        Tell("check", "ours", SecondsOf([&] { Check(trees, table); }));
    }
    return 0;
}
