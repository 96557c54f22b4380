#include "engine/scan_folders.h"

#include <exception>
#include <utility>

#include "engine/folder_comparison.h"
#include "hashdb/destination_folder.h"
#include "support/case_folding.h"
#include "support/system_error.h"
#include "texts/problem_text.h"

namespace {

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
             .stopRequested = [&task] { return task.Terminated(); }}) {}

void TFolderScan::Run() {
    try {
        for (const SourceFolderRow& row : *parameters_.dataSet) {
            walk_.Add(row);
            if (task_.Terminated()) {
                break;
            }
        }
        for (const TSourceFolder& folder : walk_.Folders()) {
            ScanFolder(folder);
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

void TFolderScan::ScanFolder(const TSourceFolder& folder) {
    if (roots_->IsLost(folder.root)) {
        return;
    }
    TFolderComparison comparison(calls_, folder.path,
                                 DestinationOfFilesIn(parameters_.nas, parameters_.host, folder.path),
                                 {.records = *parameters_.nasData,
                                  .localTime = localTime_,
                                  .fetchCloudFiles = parameters_.fetchCloudFiles});
    std::exception_ptr failure;
    try {
        Compare(folder, comparison);
    } catch (...) {
        failure = std::current_exception();
    }
    // What was found before a failure is copied all the same.
    SendFindings(folder, comparison);
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void TFolderScan::Compare(const TSourceFolder& folder, TFolderComparison& comparison) {
    walk_.ListFiles(folder, [&](const WIN32_FIND_DATAW& file) {
        if (!folder.sharesTarget || IsNewAtTarget(folder, file.cFileName)) {
            comparison.Add(file);
        }
    });
    comparison.Finish();
}

// Two folders whose destinations differ only in case may be one folder there: the file that came first keeps
// its place.
bool TFolderScan::IsNewAtTarget(const TSourceFolder& folder, const std::wstring& name) {
    const std::wstring target = DestinationOfFilesIn(parameters_.nas, parameters_.host, folder.path);
    if (namesAtTarget_[FoldedCase(target)].insert(FoldedCase(name)).second) {
        return true;
    }
    ++fileCount_;
    ++comparedFiles_[folder.root];
    Send(task_, TScanMessage::Problem,
         TProblem{.what = TProblemKind::NamesCollide, .path = folder.path + L"\\" + name});
    return false;
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
    Send(task_, TScanMessage::IgnoreText,
         L"Dateivergleich mit " + std::to_wstring(fileCount_) + L" Dateien abgeschlossen");
}
