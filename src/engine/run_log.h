// What became of a run, in a text file that is still there when the window is closed.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "support/date_time.h"
#include "support/platform_calls.h"
#include "support/problem.h"
#include "texts/run_log_text.h"

// Writes one run's log, from the window's thread. Nothing here throws, and nothing that fails here is told: a
// run is not worse for a log that cannot be written.
//
// Every line goes to the system with a call of its own, into a file that stays open, so that a program that
// is killed leaves all of them; that is one call per file that failed, beside the dozen that its copy took.
// They are not flushed to the disk: what a power cut may cost here is the log's last seconds, and nothing of
// the backup.
class TRunLog {
public:
    static constexpr std::size_t kKept = 30;

    // The log is made in the folder "Log" of the configuration folder, by Begin. An empty folder is none.
    TRunLog(const TPlatformCalls& calls, std::wstring_view configurationFolder);
    TRunLog(const TRunLog&) = delete;
    TRunLog& operator=(const TRunLog&) = delete;
    ~TRunLog();

    // Makes the file and removes the oldest logs beyond kKept. Without Begin, or when the file cannot be
    // made, the rest does nothing.
    void Begin(TDateTime start) noexcept;
    // This computer's folder in the destination, as soon as it is known.
    void Destination(std::wstring_view folder) noexcept;
    // A source folder that was walked to its end.
    void SourceFolder(std::wstring_view folder, std::uint64_t filesCompared) noexcept;
    // A row that is no plain success.
    void Problem(const TProblem& problem) noexcept;
    // Anything else that is worth a line, in the words given.
    void Note(std::wstring_view text) noexcept;
    // The last lines; closes the file. A log without them is that of a run that was killed.
    void End(const TRunSummary& summary) noexcept;

    // The log's full path; empty while there is none.
    const std::wstring& Path() const { return path_; }
    // The first error that was met; ERROR_SUCCESS when there was none.
    TErrorCode Error() const { return error_; }

private:
    template <typename Work>
    void Guarded(Work work) noexcept;
    void Remember(TErrorCode error);
    void Create(TDateTime start);
    void RemoveOldLogs() const;
    // A line with the time of day before it.
    void WriteLine(const std::wstring& line);
    void Write(std::wstring_view text);
    void Close();

    const TPlatformCalls& calls_;
    const std::wstring folder_;
    std::wstring path_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    TErrorCode error_ = ERROR_SUCCESS;
};

// The full path of the newest log; empty when there is none. Throws only what allocating throws.
std::wstring NewestRunLog(const TPlatformCalls& calls, std::wstring_view configurationFolder);
