#include "engine/scan_folders.h"

#include <exception>
#include <stdexcept>

#include "engine/copy_decision.h"
#include "hashdb/destination_folder.h"
#include "hashdb/destination_listing.h"
#include "support/case_folding.h"
#include "support/folder_listing.h"
#include "support/folder_tree.h"
#include "support/path_hash.h"
#include "support/system_error.h"
#include "support/text.h"
#include "texts/problem_text.h"

namespace {

void SendText(IOmniTask& task, TScanMessage message, std::wstring text) {
    task.Send(static_cast<std::uint16_t>(message), std::move(text));
}

void SendProblem(IOmniTask& task, TProblem problem) {
    task.Send(static_cast<std::uint16_t>(TScanMessage::Problem), std::move(problem));
}

// Whether a folder that could not be asked for may be there all the same. A drive without its medium is as
// good as one that is not plugged in.
bool MayBeThere(TErrorCode error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_LOGON_FAILURE ||
           (IsOutOfReach(error) && error != ERROR_NOT_READY);
}

}  // namespace

TFolderScan::TFolderScan(IOmniTask& task, const TPlatformCalls& calls, TScanParameters parameters)
    : task_(task), calls_(calls), parameters_(std::move(parameters)), linkLoops_(calls) {}

void TFolderScan::Run() {
    try {
        CollectAllFolders();
        for (const std::wstring& folder : folders_) {
            ScanFolder(folder);
            if (task_.Terminated()) {
                break;
            }
        }
    } catch (const std::exception& error) {
        // Without this row an unfinished scan would look like a complete one.
        SendProblem(task_, {.what = TProblemKind::ScanBroken,
                            .detail = ProblemText(ProblemOf(error), &SystemErrorText)});
    }
    SendText(task_, TScanMessage::IgnoreText,
             L"Dateivergleich mit " + std::to_wstring(fileCount_) + L" Dateien abgeschlossen");
}

void TFolderScan::CollectAllFolders() {
    for (const SourceFolderRow& row : *parameters_.dataSet) {
        if (!row.Aktive.value_or(false)) {
            continue;
        }
        const std::wstring folder = row.Folder();
        const TAttributes attributes = QueryAttributes(calls_, folder);
        if (MayBeThere(attributes.error)) {
            TellIncomplete(folder, attributes.error);
        }
        if (!attributes.IsFolder()) {
            continue;
        }
        filter_ =
            TExtensionFilter(row.Extensions.value_or(std::wstring()),
                             ParseExtensionMode(row.ExtensionMode.value_or(std::wstring())), &FoldedCase);
        folders_.push_back(folder);
        if (row.Rekursiv.value_or(false)) {
            WalkSubFolders(calls_, linkLoops_, folder,
                           {.hiddenFolders = row.Hidden.value_or(false),
                            .found =
                                [this](const std::wstring& found) {
                                    folders_.push_back(found);
                                    return !task_.Terminated();
                                },
                            .incomplete = [this](const std::wstring& incomplete,
                                                 TErrorCode error) { TellIncomplete(incomplete, error); }});
        }
        if (task_.Terminated()) {
            break;
        }
    }
}

void TFolderScan::ScanFolder(const std::wstring& folder) {
    auto filesToCopy = std::make_unique<TStringList>();
    std::exception_ptr failure;
    try {
        FindFilesToCopy(folder, *filesToCopy);
    } catch (...) {
        failure = std::current_exception();
    }
    // What was found before a failure is copied all the same.
    if (!filesToCopy->empty()) {
        task_.Send(static_cast<std::uint16_t>(TScanMessage::FilesToCopy), std::move(filesToCopy));
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void TFolderScan::FindFilesToCopy(const std::wstring& folder, TStringList& filesToCopy) {
    const TDestinationListing destination(calls_,
                                          DestinationOfFilesIn(parameters_.nas, parameters_.host, folder));
    std::wstring path = folder + L"\\";
    const std::size_t folderLength = path.size();
    TFolderListing listing(calls_, folder);
    while (listing.Next()) {
        const WIN32_FIND_DATAW& file = listing.Entry();
        if (IsFolder(file) || !filter_.Passes(file.cFileName)) {
            continue;
        }
        path.replace(folderLength, std::wstring::npos, file.cFileName);
        if (MustCopy(destination, file, path)) {
            filesToCopy.push_back(path);
        }
        ++fileCount_;
    }
    if (listing.Error() != ERROR_SUCCESS && !listing.FolderIsMissing()) {
        TellIncomplete(folder, listing.Error());
    }
}

bool TFolderScan::MustCopy(const TDestinationListing& destination, const WIN32_FIND_DATAW& file,
                           std::wstring_view path) const {
    const auto copied = destination.LastWriteOf(file.cFileName);
    if (!copied) {
        return true;
    }
    try {
        return MustCopyAgain(localTime_.ToLocal(file.ftLastWriteTime),
                             parameters_.nasData->Find(PathDigest(path)),
                             [&] { return localTime_.ToLocal(*copied); });
    } catch (const std::exception& error) {
        throw std::runtime_error(error.what() + (": " + ToUtf8(path)));
    }
}

// A listing that breaks off is not an empty folder: somebody must hear of it, once.
void TFolderScan::TellIncomplete(const std::wstring& folder, TErrorCode error) {
    if (toldFolders_.insert(folder).second) {
        SendProblem(task_, {.what = TProblemKind::FolderIncomplete, .path = folder, .code = error});
    }
}
