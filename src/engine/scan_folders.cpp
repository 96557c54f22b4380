#include "engine/scan_folders.h"

#include <exception>
#include <utility>

#include "support/system_error.h"
#include "texts/problem_text.h"
#include "texts/run_texts.h"

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
      folders_(task, calls, *roots_, parameters_.nas, parameters_.host, parameters_.readAhead,
               [&task](TProblem problem) { Send(task, TScanMessage::Problem, std::move(problem)); }) {}

void TFolderScan::Run() {
    try {
        folders_.Find(*parameters_.dataSet);
        for (std::size_t number = 0; number < folders_.Count() && !task_.Terminated(); ++number) {
            folders_.Visit(number, [this](TFolderPair& pair) { CompareAndSend(pair); });
        }
        folders_.End();
    } catch (const std::exception& error) {
        // Without this row an unfinished scan would look like a complete one.
        Send(task_, TScanMessage::Problem,
             TProblem{.what = TProblemKind::ScanBroken,
                      .detail = ProblemText(ProblemOf(error), &SystemErrorText)});
    }
    SendSummary();
}

void TFolderScan::CompareAndSend(TFolderPair& pair) {
    TFolderComparison comparison(calls_, pair.source.path,
                                 TDestinationListing(calls_, pair.target, *pair.listings.destination),
                                 {.records = *parameters_.nasData,
                                  .localTime = localTime_,
                                  .fetchCloudFiles = parameters_.fetchCloudFiles});
    const std::vector<std::wstring> collisions =
        folders_.ListFiles(pair, [&](const WIN32_FIND_DATAW& file) { comparison.Add(file); });
    comparison.Finish();
    for (const std::wstring& path : collisions) {
        TellCollision(pair.source, path);
    }
    SendFindings(pair.source, comparison);
}

void TFolderScan::TellCollision(const TSourceFolder& folder, const std::wstring& path) {
    ++fileCount_;
    ++comparedFiles_[folder.root];
    Send(task_, TScanMessage::Problem, TProblem{.what = TProblemKind::NamesCollide, .path = path});
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
