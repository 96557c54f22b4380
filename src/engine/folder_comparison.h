// Comparing the files of one source folder with their copies.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/copy_decision.h"
#include "engine/task_runtime.h"
#include "hashdb/destination_listing.h"
#include "hashdb/hash_table.h"
#include "support/file_times.h"
#include "support/path_digest.h"
#include "support/platform_calls.h"
#include "support/problem.h"

// What a comparison goes by, besides the two folders.
struct TComparisonRules {
    const THashSnapshot& records;
    const TLocalTimeRule& localTime;
    bool fetchCloudFiles = false;
};

// Decides about the files of one source folder. First come all of them, one by one; those whose name the
// destination does not list as it is spelled are decided by Finish, when it is known which copies belong to
// others. Each function throws EProblem when the destination does not answer.
class TFolderComparison {
public:
    // The folder's path without a trailing "\".
    TFolderComparison(const TPlatformCalls& calls, const std::wstring& folder,
                      TDestinationListing destination, const TComparisonRules& rules);

    void Add(const WIN32_FIND_DATAW& entry);
    void Finish();

    // Full paths, in the order in which the files came.
    TStringList TakeFilesToCopy() { return std::move(toCopy_); }
    TUnchangedList TakeUnchanged() { return std::move(unchanged_); }
    std::vector<TProblem> TakeProblems() { return std::move(problems_); }
    std::int64_t FileCount() const { return fileCount_; }
    // Files that have to be copied, are not on this computer, and are not to be fetched.
    std::int64_t CloudFileCount() const { return cloudFileCount_; }

private:
    struct TFile {
        FILETIME lastWrite{};
        std::int64_t size = 0;  // bytes
        DWORD attributes = 0;
    };
    struct TWaiting {
        std::wstring name;
        TFile file;
        std::size_t before = 0;  // how many files to copy came before it
    };

    void Decide(std::wstring_view name, const TFile& file, const TExistingCopy* copy);
    void MustBeCopied(const TFile& file);
    void TellCollision();
    void SetPath(std::wstring_view name) { path_.replace(folderLength_, std::wstring::npos, name); }
    TPathDigest DigestOfPath() const;

    const TPlatformCalls& calls_;
    const TComparisonRules rules_;
    TDestinationListing destination_;
    // Of the file in hand.
    std::wstring path_;
    const std::size_t folderLength_;

    std::vector<TWaiting> waiting_;
    TStringList toCopy_;
    TUnchangedList unchanged_;
    std::vector<TProblem> problems_;
    std::int64_t fileCount_ = 0;
    std::int64_t cloudFileCount_ = 0;
};
