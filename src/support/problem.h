// What went wrong, as a value.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "support/error_code.h"

// The kinds of problems that users are told of. Each names the members of TProblem that it uses.
enum class TProblemKind {
    Unexpected,              // detail: what a library or the system said of a mistake
    FileNotRead,             // path, code
    FileNotSaved,            // path, code: the old file is as it was
    FileNotWritten,          // path, code: a line could not be appended
    NoTableFile,             // path
    OtherTableVersion,       // path
    OtherTableFields,        // path
    TableDamaged,            // path; number: the byte at which reading ended, limit: how many there are
    TooManyRecords,          // path, if it is a file's
    TextTooLong,             // detail: the field's name; number: characters entered, limit: allowed
    UserNotDecrypted,        // path, detail: why, in the words of the encryption
    PasswordNotDecrypted,    // the same
    ProtectedTextDamaged,    // detail: why, in the words of the encryption
    SettingsNotRead,         // path, code
    SettingsNotSaved,        // path, code: the old file is as it was
    UserUnknown,             // path, detail: does not decrypt, and stays until the user enters another
    PasswordUnknown,         // the same
    CredentialsUnknown,      // the same, for both
    NotEncrypted,            // detail: why user name and password were not saved
    ShareRefused,            // code
    DestinationMissing,      // path: the destination root
    TableLost,               // path; number: the records that it had when it was last saved
    DestinationTaken,        // path: another program works on it
    HostFolderNotMade,       // path: destination root and host name
    FolderNotMade,           // path, code: below this computer's folder
    DestinationUnreachable,  // code
    DestinationLost,         // path; number: files that are still to be copied
    FolderIncomplete,        // path, code: not listed to its end
    SourceFolderMissing,     // path, as the row has it; empty when it names none
    SourceFolderLost,        // path, code: it was there when the run began
    SourceInBackup,          // path: lies in the backup's own tree, and is not copied
    BackupInSource,          // path: the backup's own tree, met in a source folder and passed over
    NamesCollide,            // path: a source file whose name another one has at the destination
    ScanBroken,              // detail: why
    CopyFailed,              // path: the source; code
    // What a check of the backup finds. path: the source.
    CopyMissing,
    CopyIsFolder,        // a folder lies in its place
    CopySizeDiffers,     // number: bytes of the copy, limit: of the source
    CopyContentDiffers,  // number: bytes before the first that differs
    CopyUnreadable,      // code
    SourceInUse,         // changes while it is read: not compared
    CheckBroken,         // detail: why
    NothingToCheck,      // path: this computer's folder, which the destination does not have
};

// Whether a check of the backup calls a copy bad by it.
constexpr bool IsBadCopy(TProblemKind what) {
    using enum TProblemKind;
    return what == CopyMissing || what == CopyIsFolder || what == CopySizeDiffers ||
           what == CopyContentDiffers || what == CopyUnreadable;
}

// One thing that went wrong. Holds no sentence: ProblemText (texts/problem_text.h) words it.
struct TProblem {
    TProblemKind what = TProblemKind::Unexpected;
    std::wstring path = {};
    TErrorCode code = 0;
    std::uint64_t number = 0;
    std::uint64_t limit = 0;
    std::wstring detail = {};

    friend bool operator==(const TProblem&, const TProblem&) = default;
};

// Carries a problem to whoever can tell of it. The text of what() is for a debugger only.
class EProblem : public std::exception {
public:
    explicit EProblem(TProblem problem) : problem_(std::make_shared<const TProblem>(std::move(problem))) {}

    const TProblem& Problem() const { return *problem_; }
    const char* what() const noexcept override { return "EProblem"; }

private:
    // Shared, so that copying the exception cannot throw.
    std::shared_ptr<const TProblem> problem_;
};
