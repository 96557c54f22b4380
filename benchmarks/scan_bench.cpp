// What deciding costs a run in which nothing changed. Trees and hash table are there already.
//
//   scan_bench SOURCE NAS HOST ROUNDS    the scan, its floor (the bare listings) and the hashing alone
//   scan_bench SOURCE NAS HOST once      one scan and nothing else, to be timed from outside
#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/scan_folders.h"
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
double SecondsOfScan(const TTrees& trees, const THashTable& table) {
    SourceFolderRow row;
    row.Aktive = row.Rekursiv = true;
    row.Directory = trees.source;
    row.ExtensionMode = L"NO";
    const TScanParameters parameters{.dataSet = std::make_shared<const std::vector<SourceFolderRow>>(1, row),
                                     .nasData = table.Snapshot(),
                                     .nas = trees.nas,
                                     .host = trees.host};
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
        [&](IOmniTask& own) {
            seconds = SecondsOf([&] { TFolderScan(own, SystemPlatformCalls(), parameters).Run(); });
        },
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

}  // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    if (count != 5) {
        std::fputs("usage: scan_bench SOURCE NAS HOST ROUNDS|once\n", stderr);
        return 64;
    }
    const TTrees trees{arguments[1], arguments[2], arguments[3]};
    CreateHashContext();
    THashTable table;
    if (!LoadHashTable(SystemPlatformCalls(), trees.nas + L"\\" + trees.host + L"\\Vardeko.dat", table)) {
        std::fputs("there is no hash table\n", stderr);
        return 66;
    }
    if (std::wstring_view(arguments[4]) == L"once") {
        Tell("scan", "ours", SecondsOfScan(trees, table) * 1e6);
    } else {
        Measure(trees, table, _wtoi(arguments[4]));
    }
    return 0;
}
