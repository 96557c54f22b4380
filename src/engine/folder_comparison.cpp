#include "engine/folder_comparison.h"

#include <exception>

#include "engine/cloud_files.h"
#include "support/file_identity.h"
#include "support/folder_listing.h"
#include "support/path_hash.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "texts/problem_text.h"

namespace {

TFileState StateOf(const FILETIME& lastWrite, std::int64_t size) {
    const auto ticks = static_cast<std::uint64_t>(lastWrite.dwHighDateTime) << 32 | lastWrite.dwLowDateTime;
    return {.written = UniversalDateTime(ticks), .size = size};
}

}  // namespace

TFolderComparison::TFolderComparison(const TPlatformCalls& calls, const std::wstring& folder,
                                     TDestinationListing destination, const TComparisonRules& rules)
    : calls_(calls),
      rules_(rules),
      destination_(std::move(destination)),
      path_(folder + L"\\"),
      folderLength_(path_.size()) {}

void TFolderComparison::Add(const WIN32_FIND_DATAW& entry) {
    TFile file{entry.ftLastWriteTime, SizeOf(entry), entry.dwFileAttributes};
    if (IsSymbolicLink(entry)) {
        // The listing tells of the link; what is copied is the file that it leads to.
        SetPath(entry.cFileName);
        const TAttributes target = QueryAttributesBehindLink(calls_, path_);
        if (target.IsFolder() || IsMissing(target.error)) {
            return;
        }
        if (target.Exists()) {
            file = {target.data.ftLastWriteTime, target.Size(), target.data.dwFileAttributes};
        }
    }
    ++fileCount_;
    if (const TExistingCopy* copy = destination_.Claim(entry.cFileName)) {
        Decide(entry.cFileName, file, copy);
    } else {
        waiting_.push_back({entry.cFileName, file, toCopy_.size()});
    }
}

void TFolderComparison::Finish() {
    // Put together anew, in the order of the source's listing.
    TStringList listed = std::exchange(toCopy_, {});
    std::size_t taken = 0;
    const auto takeListed = [&](std::size_t end) {
        for (; taken < end; ++taken) {
            toCopy_.push_back(std::move(listed[taken]));
        }
    };
    try {
        for (const TWaiting& waiting : std::exchange(waiting_, {})) {
            takeListed(waiting.before);
            const TDestinationListing::TOther other = destination_.ClaimOther(waiting.name);
            if (other.taken) {
                SetPath(waiting.name);
                TellCollision();
            } else {
                Decide(waiting.name, waiting.file, other.copy ? &*other.copy : nullptr);
            }
        }
    } catch (...) {
        takeListed(listed.size());
        throw;
    }
    takeListed(listed.size());
}

void TFolderComparison::Decide(std::wstring_view name, const TFile& file, const TExistingCopy* copy) {
    SetPath(name);
    if (copy == nullptr) {
        return MustBeCopied(file);
    }
    const TPathDigest hash = DigestOfPath();
    const TDateTime local = rules_.localTime.ToLocal(file.lastWrite);
    const std::optional<TDateTime> recorded = rules_.records.Find(hash);
    switch (DecideCopy(StateOf(file.lastWrite, file.size), local, recorded,
                       StateOf(copy->lastWrite, copy->size))) {
        case TCopyDecision::Copy:
            return MustBeCopied(file);
        case TCopyDecision::Record:
            return unchanged_.push_back({hash, local});
        case TCopyDecision::Leave:
            // What lies there under a numbered name without having been copied from here is an earlier copy
            // of another file.
            if (copy->size != file.size && IsNumberedName(name) && (!recorded || recorded == local)) {
                TellCollision();
            }
    }
}

void TFolderComparison::MustBeCopied(const TFile& file) {
    if (MustBeFetched(file.attributes) && !rules_.fetchCloudFiles) {
        ++cloudFileCount_;
    } else {
        toCopy_.push_back(path_);
    }
}

void TFolderComparison::TellCollision() {
    problems_.push_back({.what = TProblemKind::NamesCollide, .path = path_});
}

TPathDigest TFolderComparison::DigestOfPath() const {
    try {
        return PathDigest(path_);
    } catch (const std::exception& error) {
        throw EProblem({.what = TProblemKind::Unexpected,
                        .detail = ProblemText(ProblemOf(error), &SystemErrorText) + L": " + path_});
    }
}
