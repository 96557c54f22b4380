#include "engine/run_log.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "engine/run_log_name.h"
#include "support/date_time_text.h"
#include "support/file_access.h"
#include "support/folder_listing.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "support/text.h"

namespace {

// Runs that begin in the same second get the names of the next ones.
constexpr int kNamesTried = 60;

std::wstring LogFolder(std::wstring_view configurationFolder) {
    return configurationFolder.empty() ? std::wstring() : std::wstring(configurationFolder) + L"\\Log";
}

// The run logs in the folder. When its listing breaks off these are not all of them, which leaves some for
// the next run to remove.
std::vector<std::wstring> RunLogsIn(const TPlatformCalls& calls, const std::wstring& folder) {
    std::vector<std::wstring> names;
    TFolderListing listing(calls, folder);
    while (listing.Next()) {
        if (!IsFolder(listing.Entry()) && IsRunLogName(listing.Entry().cFileName)) {
            names.emplace_back(listing.Entry().cFileName);
        }
    }
    return names;
}

std::wstring SystemText(TErrorCode code) {
    return SystemErrorText(code);
}

}  // namespace

// No std::function, whose making can throw.
template <typename Work>
void TRunLog::Guarded(Work work) noexcept {
    try {
        work();
    } catch (const std::exception&) {
        Remember(ERROR_NOT_ENOUGH_MEMORY);
    }
}

TRunLog::TRunLog(const TPlatformCalls& calls, std::wstring_view configurationFolder)
    : calls_(calls), folder_(LogFolder(configurationFolder)) {}

TRunLog::~TRunLog() {
    Close();
}

void TRunLog::Begin(TDateTime start) noexcept {
    Guarded([&] {
        Create(start);
        Write(RunLogTitle(start) + L"\r\n");
        RemoveOldLogs();
    });
}

void TRunLog::Destination(std::wstring_view folder) noexcept {
    Guarded([&] { WriteLine(RunLogDestination(folder)); });
}

void TRunLog::SourceFolder(std::wstring_view folder, std::uint64_t filesCompared) noexcept {
    Guarded([&] { WriteLine(RunLogSourceFolder(folder, filesCompared)); });
}

void TRunLog::Problem(const TProblem& problem) noexcept {
    Guarded([&] { WriteLine(RunLogProblem(problem, &SystemText)); });
}

void TRunLog::Note(std::wstring_view text) noexcept {
    Guarded([&] { WriteLine(std::wstring(text)); });
}

void TRunLog::End(const TRunSummary& summary) noexcept {
    Guarded([&] { Write(L"\r\n" + RunLogEnd(summary, CurrentDateTime())); });
    Close();
}

void TRunLog::Create(TDateTime start) {
    Close();
    path_.clear();
    if (folder_.empty() || !CreateFolders(calls_, folder_)) {
        return Remember(ERROR_PATH_NOT_FOUND);
    }
    TErrorCode error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < kNamesTried; ++attempt) {
        const std::wstring path = folder_ + L"\\" + RunLogName({start.milliseconds + attempt * 1000});
        file_ = calls_.CreateFileW(ExtendedPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                   CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file_ != INVALID_HANDLE_VALUE) {
            path_ = path;
            return;
        }
        error = GetLastError();
        if (error != ERROR_FILE_EXISTS) {
            break;
        }
    }
    Remember(error);
}

void TRunLog::RemoveOldLogs() const {
    if (file_ == INVALID_HANDLE_VALUE) {
        return;
    }
    std::vector<std::wstring> names = RunLogsIn(calls_, folder_);
    // This one stays, also when the clock was set back and it is not the newest.
    std::erase(names, FileNamePart(path_));
    for (const std::wstring& name : SuperfluousRunLogs(names, kKept - 1)) {
        RemoveFile(calls_, folder_ + L"\\" + name);
    }
}

void TRunLog::WriteLine(const std::wstring& line) {
    Write(ClockText(CurrentDateTime()) + L"  " + InOneLine(line));
}

void TRunLog::Write(std::wstring_view text) {
    if (file_ == INVALID_HANDLE_VALUE) {
        return;
    }
    const std::string bytes = ToUtf8(text) + "\r\n";
    DWORD written = 0;
    if (!calls_.WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        Remember(GetLastError());
    }
}

void TRunLog::Remember(TErrorCode error) {
    if (error_ == ERROR_SUCCESS) {
        error_ = error;
    }
}

void TRunLog::Close() {
    if (file_ != INVALID_HANDLE_VALUE) {
        calls_.CloseHandle(file_);
        file_ = INVALID_HANDLE_VALUE;
    }
}

std::wstring NewestRunLog(const TPlatformCalls& calls, std::wstring_view configurationFolder) {
    const std::wstring folder = LogFolder(configurationFolder);
    if (folder.empty()) {
        return {};
    }
    const std::vector<std::wstring> names = RunLogsIn(calls, folder);
    const auto newest = std::ranges::max_element(names);
    return newest == names.end() ? std::wstring() : folder + L"\\" + *newest;
}
