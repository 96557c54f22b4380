// What the backup already holds of one folder.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "support/file_access.h"
#include "support/folder_listing.h"
#include "support/platform_calls.h"

// A file in the backup.
struct TExistingCopy {
    FILETIME lastWrite{};
    std::int64_t size = 0;  // bytes
};

// What becomes of temporary files of interrupted runs.
enum class TLeftOvers { Remove, Keep };

// Answers for every file of one destination folder whether it exists, when it was last written and how large
// it is, from a single listing: the destination is far away, and a question per file is what makes backups
// slow. Asked is only what a listing cannot answer: everything when it fails for another reason than a
// missing folder, so that nothing is wrongly held for missing; a symbolic link; and a name that is not listed
// as it is spelled, when the listing knows another spelling or the name is one that file systems spell
// differently, since whether two names are one file is the file system's to say. When the destination does
// not answer, making one and asking throw EProblem (DestinationUnreachable). Temporary files of interrupted
// runs are removed on the way, unless they are to be kept; copies they are not.
class TDestinationListing {
public:
    // The folder's path, without a trailing "\".
    TDestinationListing(const TPlatformCalls& calls, std::wstring folder);
    // From a listing of the folder of which nothing was taken yet.
    TDestinationListing(const TPlatformCalls& calls, std::wstring folder, TFolderListing& listing,
                        TLeftOvers leftOvers = TLeftOvers::Remove);

    // The file of that name; nothing when there is no such file (a folder of that name is none).
    std::optional<TExistingCopy> CopyOf(std::wstring_view fileName);

    // The same for several names of which no two may have one copy. First the listing alone is gone through;
    // a copy that it knows under exactly this name belongs to it from then on.
    const TExistingCopy* Claim(std::wstring_view fileName);
    // Then the names that Claim did not find. `taken`: the file is the copy of another name.
    struct TOther {
        std::optional<TExistingCopy> copy;
        bool taken = false;
    };
    TOther ClaimOther(std::wstring_view fileName);

private:
    struct TEntry {
        TExistingCopy copy;
        bool claimed = false;
    };
    struct TNameHash {
        using is_transparent = void;
        std::size_t operator()(std::wstring_view name) const { return std::hash<std::wstring_view>()(name); }
    };

    void Read(TFolderListing& listing, TLeftOvers leftOvers);
    void Add(const WIN32_FIND_DATAW& entry);
    TAttributes AskForAttributes(std::wstring_view path) const;
    std::optional<TExistingCopy> Ask(std::wstring_view fileName) const;
    TEntry* OtherSpelling(std::wstring_view fileName);
    bool MayBeSpelledDifferently(std::wstring_view fileName);

    const TPlatformCalls& calls_;
    std::wstring folder_;
    bool complete_ = false;
    std::unordered_map<std::wstring, TEntry, TNameHash, std::equal_to<>> files_;
    // By NameKey, made when a file is first missed: when nothing has changed, none is.
    std::optional<std::unordered_map<std::wstring, TEntry*>> otherSpellings_;
    // The names that have no copy yet, in upper case.
    std::unordered_set<std::wstring> newNames_;
};
