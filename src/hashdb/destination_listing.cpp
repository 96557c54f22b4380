#include "hashdb/destination_listing.h"

#include <algorithm>
#include <utility>

#include "support/case_folding.h"
#include "support/file_identity.h"
#include "support/problem.h"
#include "support/temporary_name.h"

namespace {

TExistingCopy CopyFrom(const TAttributes& attributes) {
    return {.lastWrite = attributes.data.ftLastWriteTime, .size = attributes.Size()};
}

}  // namespace

TDestinationListing::TDestinationListing(const TPlatformCalls& calls, std::wstring folder)
    : calls_(calls), folder_(std::move(folder)) {
    TFolderListing listing(calls_, folder_);
    Read(listing, TLeftOvers::Remove);
}

TDestinationListing::TDestinationListing(const TPlatformCalls& calls, std::wstring folder,
                                         TFolderListing& listing, TLeftOvers leftOvers)
    : calls_(calls), folder_(std::move(folder)) {
    Read(listing, leftOvers);
}

void TDestinationListing::Read(TFolderListing& listing, TLeftOvers leftOvers) {
    while (listing.Next()) {
        const WIN32_FIND_DATAW& entry = listing.Entry();
        if (IsFolder(entry)) {
            continue;
        }
        if (leftOvers == TLeftOvers::Remove && IsLeftOverTemporaryName(entry.cFileName)) {
            RemoveFile(calls_, folder_ + L"\\" + entry.cFileName);
        } else if (!IsTemporaryName(entry.cFileName)) {
            Add(entry);
        }
    }
    complete_ = listing.Error() == ERROR_SUCCESS || listing.FolderIsMissing();
    if (IsOutOfReach(listing.Error())) {
        // Asked at once: where no file is asked for, each further folder would wait out the network.
        AskForAttributes(folder_);
    }
}

void TDestinationListing::Add(const WIN32_FIND_DATAW& entry) {
    if (!IsSymbolicLink(entry)) {
        files_.emplace(entry.cFileName, TEntry{{entry.ftLastWriteTime, SizeOf(entry)}});
    } else if (const auto copy = Ask(entry.cFileName)) {
        files_.emplace(entry.cFileName, TEntry{*copy});
    }
}

TAttributes TDestinationListing::AskForAttributes(std::wstring_view path) const {
    TAttributes attributes = QueryAttributes(calls_, path);
    if ((attributes.data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        attributes = QueryAttributesBehindLink(calls_, path);
    }
    if (IsOutOfReach(attributes.error)) {
        // Every further question would wait out the network once more.
        throw EProblem({.what = TProblemKind::DestinationUnreachable, .code = attributes.error});
    }
    return attributes;
}

std::optional<TExistingCopy> TDestinationListing::Ask(std::wstring_view fileName) const {
    const TAttributes attributes = AskForAttributes(folder_ + L"\\" + std::wstring(fileName));
    return attributes.IsFile() ? std::optional(CopyFrom(attributes)) : std::nullopt;
}

std::optional<TExistingCopy> TDestinationListing::CopyOf(std::wstring_view fileName) {
    if (const TExistingCopy* copy = Claim(fileName)) {
        return *copy;
    }
    return !complete_ || MayBeSpelledDifferently(fileName) ? Ask(fileName) : std::nullopt;
}

const TExistingCopy* TDestinationListing::Claim(std::wstring_view fileName) {
    const auto found = complete_ ? files_.find(fileName) : files_.end();
    if (found == files_.end()) {
        return nullptr;
    }
    found->second.claimed = true;
    return &found->second.copy;
}

TDestinationListing::TOther TDestinationListing::ClaimOther(std::wstring_view fileName) {
    if (!complete_ || MayBeSpelledDifferently(fileName)) {
        TEntry* const other = complete_ ? OtherSpelling(fileName) : nullptr;
        if (const auto copy = Ask(fileName)) {
            return {.copy = copy, .taken = other != nullptr && std::exchange(other->claimed, true)};
        }
        if (other != nullptr) {
            // The file system tells the two spellings apart.
            return {};
        }
    }
    // Whether two new names become one file only the next run can ask: one of them has to wait for it.
    return {.copy = std::nullopt, .taken = !newNames_.insert(FoldedCase(fileName)).second};
}

TDestinationListing::TEntry* TDestinationListing::OtherSpelling(std::wstring_view fileName) {
    if (!otherSpellings_) {
        otherSpellings_.emplace();
        for (auto& [name, entry] : files_) {
            TEntry*& known = (*otherSpellings_)[NameKey(name)];
            if (known == nullptr || known->claimed) {
                known = &entry;
            }
        }
    }
    const auto found = otherSpellings_->find(NameKey(fileName));
    return found != otherSpellings_->end() ? found->second : nullptr;
}

bool TDestinationListing::MayBeSpelledDifferently(std::wstring_view fileName) {
    // File systems have rules of their own for letters beyond ASCII.
    return !files_.empty() && (OtherSpelling(fileName) != nullptr ||
                               std::ranges::any_of(fileName, [](wchar_t letter) { return letter >= 0x80; }));
}
