#include "engine/scan_folders.h"

#include <exception>
#include <utility>

#include "engine/destination_wait.h"
#include "engine/folder_comparison.h"
#include "hashdb/destination_folder.h"
#include "support/case_folding.h"
#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

namespace {

constexpr unsigned kAttempts = 3;  // for one folder

void Send(IOmniTask& task, TScanMessage message, TTaskValue value) {
    task.Send(static_cast<std::uint16_t>(message), std::move(value));
}

template <typename Item>
void SendList(IOmniTask& task, TScanMessage message, std::vector<Item> list) {
    if (!list.empty()) {
        Send(task, message, std::make_unique<std::vector<Item>>(std::move(list)));
    }
}

}  // namespace

TFolderScan::TFolderScan(IOmniTask& task, const TPlatformCalls& calls, TScanParameters parameters)
    : task_(task),
      calls_(calls),
      parameters_(std::move(parameters)),
      roots_(parameters_.sourceRoots ? parameters_.sourceRoots : std::make_shared<TSourceRoots>(calls)),
      walk_(calls, *roots_, parameters_.nas, parameters_.host, TSourceWalkKind::Backup,
            {.problem = [&task](TProblem problem) { Send(task, TScanMessage::Problem, std::move(problem)); },
             .folderFound = {},
             .stopRequested = [&task] { return task.Terminated(); }}),
      listings_(
          calls, task, *roots_, walk_.Folders(),
          [this](const TSourceFolder& folder) { return TargetOf(folder); }, parameters_.readAhead),
      sharedTargets_(calls) {}

std::wstring TFolderScan::TargetOf(const TSourceFolder& folder) const {
    return DestinationOfFilesIn(parameters_.nas, parameters_.host, folder.path);
}

void TFolderScan::Run() {
    try {
        for (const SourceFolderRow& row : *parameters_.dataSet) {
            walk_.Add(row);
            if (task_.Terminated()) {
                break;
            }
        }
        for (std::size_t number = 0; number < walk_.Folders().size(); ++number) {
            ScanFolder(number);
            if (task_.Terminated()) {
                break;
            }
        }
        walk_.End();
    } catch (const std::exception& error) {
        // Without this row an unfinished scan would look like a complete one.
        Send(task_, TScanMessage::Problem,
             TProblem{.what = TProblemKind::ScanBroken,
                      .detail = ProblemText(ProblemOf(error), &SystemErrorText)});
    }
    SendSummary();
}

// A destination that is away for some seconds is waited for, and the folder is compared once more.
void TFolderScan::ScanFolder(std::size_t number) {
    if (roots_->IsLost(walk_.Folders()[number].root)) {
        return;
    }
    for (unsigned attempt = 1;; ++attempt) {
        try {
            return CompareAndSend(number);
        } catch (const EProblem& problem) {
            listings_.Forget();
            if (problem.Problem().what != TProblemKind::DestinationUnreachable || attempt == kAttempts ||
                !DestinationComesBack()) {
                throw;
            }
        }
    }
}

bool TFolderScan::DestinationComesBack() const {
    return AwaitFolder(calls_, parameters_.nas + L"\\" + parameters_.host, kLongestDropOut, task_).IsFolder();
}

void TFolderScan::CompareAndSend(std::size_t number) {
    const TSourceFolder& folder = walk_.Folders()[number];
    const std::optional<TFolderListings> listings = listings_.Take(number);
    if (!listings) {
        return;
    }
    const std::wstring target = TargetOf(folder);
    TFolderComparison comparison(calls_, folder.path,
                                 TDestinationListing(calls_, target, *listings->destination),
                                 {.records = *parameters_.nasData,
                                  .localTime = localTime_,
                                  .fetchCloudFiles = parameters_.fetchCloudFiles});
    Compare(folder, target, *listings->source, comparison);
    SendFindings(folder, comparison);
}

void TFolderScan::Compare(const TSourceFolder& folder, const std::wstring& target, TFolderListing& listing,
                          TFolderComparison& comparison) {
    TSharedTargets::TNames* const names = folder.sharesTarget ? &sharedTargets_.NamesAt(target) : nullptr;
    TSharedTargets::TNames given;
    std::vector<std::wstring> collisions;
    walk_.ListFiles(folder, listing, [&](const WIN32_FIND_DATAW& file) {
        const std::wstring name = names != nullptr ? FoldedCase(file.cFileName) : std::wstring();
        if (names == nullptr || (!names->contains(name) && given.insert(name).second)) {
            comparison.Add(file);
        } else {
            collisions.emplace_back(file.cFileName);
        }
    });
    comparison.Finish();
    // Only now: a comparison that broke off begins anew.
    if (names != nullptr) {
        names->merge(given);
    }
    for (const std::wstring& name : collisions) {
        TellCollision(folder, name);
    }
}

void TFolderScan::TellCollision(const TSourceFolder& folder, const std::wstring& name) {
    ++fileCount_;
    ++comparedFiles_[folder.root];
    Send(task_, TScanMessage::Problem,
         TProblem{.what = TProblemKind::NamesCollide, .path = folder.path + L"\\" + name});
}

void TFolderScan::SendFindings(const TSourceFolder& folder, TFolderComparison& comparison) {
    SendList(task_, TScanMessage::FilesToCopy, comparison.TakeFilesToCopy());
    SendList(task_, TScanMessage::Unchanged, comparison.TakeUnchanged());
    for (TProblem& problem : comparison.TakeProblems()) {
        Send(task_, TScanMessage::Problem, std::move(problem));
    }
    fileCount_ += comparison.FileCount();
    cloudFileCount_ += comparison.CloudFileCount();
    comparedFiles_[folder.root] += comparison.FileCount();
}

void TFolderScan::SendSummary() {
    for (const auto& [root, files] : comparedFiles_) {
        Send(task_, TScanMessage::Compared, TComparedFolder{roots_->Folder(root), files});
    }
    if (cloudFileCount_ > 0) {
        Send(task_, TScanMessage::CloudFiles, cloudFileCount_);
    }
    Send(task_, TScanMessage::IgnoreText, ComparedText(fileCount_));
}
