#include "hashdb/destination_listing.h"

#include "support/case_folding.h"
#include "support/folder_listing.h"
#include "support/problem.h"
#include "support/temporary_name.h"

TDestinationListing::TDestinationListing(const TPlatformCalls& calls, std::wstring folder)
    : calls_(calls), folder_(std::move(folder)) {
    Read();
}

void TDestinationListing::Read() {
    TFolderListing listing(calls_, folder_);
    while (listing.Next()) {
        const WIN32_FIND_DATAW& entry = listing.Entry();
        if (IsFolder(entry)) {
            continue;
        }
        if (IsLeftOverTemporaryName(entry.cFileName)) {
            RemoveFile(calls_, folder_ + L"\\" + entry.cFileName);
        } else if (!IsTemporaryName(entry.cFileName)) {
            files_.emplace(entry.cFileName, entry.ftLastWriteTime);
        }
    }
    complete_ = listing.Error() == ERROR_SUCCESS || listing.FolderIsMissing();
    if (IsOutOfReach(listing.Error())) {
        // Asked at once: where no file is asked for, each further folder would wait out the network.
        AskForAttributes(folder_);
    }
}

TAttributes TDestinationListing::AskForAttributes(std::wstring_view path) const {
    TAttributes attributes = QueryAttributes(calls_, path);
    if (IsOutOfReach(attributes.error)) {
        // Every further question would wait out the network once more.
        throw EProblem({.what = TProblemKind::DestinationUnreachable, .code = attributes.error});
    }
    return attributes;
}

std::optional<FILETIME> TDestinationListing::Ask(std::wstring_view fileName) const {
    const TAttributes attributes = AskForAttributes(folder_ + L"\\" + std::wstring(fileName));
    return attributes.IsFile() ? std::optional(attributes.data.ftLastWriteTime) : std::nullopt;
}

std::optional<FILETIME> TDestinationListing::LastWriteOf(std::wstring_view fileName) const {
    if (!complete_) {
        return Ask(fileName);
    }
    if (const auto found = files_.find(fileName); found != files_.end()) {
        return found->second;
    }
    return KnowsOtherSpelling(fileName) ? Ask(fileName) : std::nullopt;
}

bool TDestinationListing::KnowsOtherSpelling(std::wstring_view fileName) const {
    if (!foldedNames_) {
        foldedNames_.emplace();
        for (const auto& [name, time] : files_) {
            foldedNames_->insert(FoldedCase(name));
        }
    }
    return foldedNames_->contains(FoldedCase(fileName));
}
