#include "texts/problem_text.h"

#include "support/text.h"

namespace {

constexpr wchar_t kTooManyRecords[] = L"Die Tabelle hat zu viele Einträge.";
constexpr TErrorCode kOtherCredentials = 1219;  // ERROR_SESSION_CREDENTIAL_CONFLICT

std::wstring Quoted(const std::wstring& path) {
    return L"\"" + path + L"\"";
}

std::wstring NotRead(const TProblem& problem, const std::wstring& reason) {
    return L"Die Datei " + Quoted(problem.path) + L" kann nicht gelesen werden: " + reason;
}

std::wstring NotDecrypted(const TProblem& problem, const wchar_t* what) {
    return what + (L" in " + Quoted(problem.path)) + L" kann nicht entschlüsselt werden: " + problem.detail;
}

std::wstring SettingsProblem(const TProblem& problem, const wchar_t* what, const std::wstring& reason) {
    return L"Die Einstellungen in „" + problem.path + L"“ konnten nicht " + what + L" werden: " + reason +
           L".";
}

std::wstring StoredUnknown(const wchar_t* what) {
    return std::wstring(what) +
           L" nicht entschlüsselt werden. Was gespeichert ist, bleibt erhalten, bis hier etwas Neues "
           L"eingegeben wird.";
}

// What the user calls a field of SourceFolderRow.
std::wstring FieldCaption(const std::wstring& field) {
    return field == L"Directory" ? L"Ordner" : field == L"Extensions" ? L"Dateityp" : L"Modus";
}

}  // namespace

std::wstring ProblemText(const TProblem& problem, TSystemText systemText) {
    const auto reason = [&] { return systemText(problem.code); };
    switch (problem.what) {
        case TProblemKind::Unexpected:
        case TProblemKind::ProtectedTextDamaged:
            return problem.detail;
        case TProblemKind::FileNotRead:
            return NotRead(problem, reason());
        case TProblemKind::FileNotSaved:
            return Quoted(problem.path) + L" konnte nicht gespeichert werden: " + reason();
        case TProblemKind::FileNotWritten:
            return Quoted(problem.path) + L" konnte nicht geschrieben werden: " + reason();
        case TProblemKind::NoTableFile:
            return NotRead(problem, L"Sie ist keine Tabellendatei.");
        case TProblemKind::OtherTableVersion:
            return NotRead(problem, L"Sie hat eine andere Version als 1.91.");
        case TProblemKind::OtherTableFields:
            return NotRead(problem, L"Sie enthält andere Felder.");
        case TProblemKind::TableDamaged:
            return NotRead(problem, L"Sie ist beschädigt (bei Byte " + std::to_wstring(problem.number) +
                                        L" von " + std::to_wstring(problem.limit) + L").");
        case TProblemKind::TooManyRecords:
            return problem.path.empty() ? kTooManyRecords : NotRead(problem, kTooManyRecords);
        case TProblemKind::TextTooLong:
            return Quoted(FieldCaption(problem.detail)) + L" darf höchstens " +
                   std::to_wstring(problem.limit) + L" Zeichen lang sein (eingegeben: " +
                   std::to_wstring(problem.number) + L").";
        case TProblemKind::UserNotDecrypted:
            return NotDecrypted(problem, L"Der Anmeldename");
        case TProblemKind::PasswordNotDecrypted:
            return NotDecrypted(problem, L"Das Passwort");
        case TProblemKind::SettingsNotRead:
            return SettingsProblem(problem, L"gelesen", reason());
        case TProblemKind::SettingsNotSaved:
            return SettingsProblem(problem, L"gespeichert", reason());
        case TProblemKind::UserUnknown:
            return StoredUnknown(L"Der gespeicherte Anmeldename kann");
        case TProblemKind::PasswordUnknown:
            return StoredUnknown(L"Das gespeicherte Passwort kann");
        case TProblemKind::CredentialsUnknown:
            return StoredUnknown(L"Anmeldename und Passwort können");
        case TProblemKind::NotEncrypted:
            return L"Anmeldename und Passwort konnten nicht verschlüsselt werden: " + problem.detail;
        case TProblemKind::ShareRefused:
        case TProblemKind::CopyFailed:
            return reason();
        case TProblemKind::DestinationMissing:
            return L"Error: Destination Directory does not exist, " + problem.path;
        case TProblemKind::DestinationTaken:
            return L"Ein anderer Lauf sichert gerade hierhin: " + problem.path;
        case TProblemKind::TableLost:
            return Quoted(problem.path) + L" fehlt; zuletzt waren dort " + std::to_wstring(problem.number) +
                   L" Dateien verzeichnet. Liegt hier ein anderer Datenträger, wird alles neu kopiert.";
        case TProblemKind::HostFolderNotMade:
            return L"Error: Can not create Subdirectory, " + problem.path;
        case TProblemKind::FolderNotMade:
            return L"Der Ordner konnte nicht angelegt werden: " + problem.path + L" (" + reason() + L")";
        case TProblemKind::DestinationUnreachable:
            return L"Das Ziel ist nicht erreichbar (" + reason() + L")";
        case TProblemKind::DestinationLost:
            return L"Das Ziel ist nicht mehr erreichbar: " + problem.path + L" (noch " +
                   std::to_wstring(problem.number) + L" Dateien zu kopieren)";
        case TProblemKind::FolderIncomplete:
            return L"Der Ordner konnte nicht vollständig gelesen werden: " + problem.path + L" (" + reason() +
                   L")";
        case TProblemKind::SourceFolderMissing:
            return problem.path.empty() ? std::wstring(L"Eine aktive Zeile nennt keinen Quellordner")
                                        : L"Der Quellordner ist nicht vorhanden: " + problem.path;
        case TProblemKind::SourceFolderLost:
            return L"Der Quellordner ist während des Laufs verschwunden: " + problem.path + L" (" + reason() +
                   L")";
        case TProblemKind::SourceInBackup:
            return L"Der Quellordner liegt in der Sicherung und wird nicht gesichert: " + problem.path;
        case TProblemKind::BackupInSource:
            return L"Die Sicherung liegt in einem Quellordner und wird dort übergangen: " + problem.path;
        case TProblemKind::NamesCollide:
            return L"Die Datei hat keine Kopie, weil im Ziel eine andere ihren Namen trägt: " + problem.path;
        case TProblemKind::CopyMissing:
            return L"Die Kopie fehlt";
        case TProblemKind::CopyIsFolder:
            return L"An der Stelle der Kopie liegt ein Ordner";
        case TProblemKind::CopySizeDiffers:
            return L"Die Kopie hat eine andere Größe: " + std::to_wstring(problem.number) + L" statt " +
                   std::to_wstring(problem.limit) + L" Bytes";
        case TProblemKind::CopyContentDiffers:
            return L"Die Kopie hat ab Byte " + std::to_wstring(problem.number + 1) + L" einen anderen Inhalt";
        case TProblemKind::CopyUnreadable:
            return L"Die Kopie kann nicht gelesen werden: " + reason();
        case TProblemKind::SourceInUse:
            return L"In Benutzung und nicht geprüft: " + problem.path;
        case TProblemKind::CheckBroken:
            return L"Die Prüfung wurde abgebrochen: " + problem.detail;
        case TProblemKind::NothingToCheck:
            return L"Hier liegt noch keine Sicherung, die geprüft werden könnte: " + problem.path;
        case TProblemKind::ScanBroken:
            return L"Der Dateivergleich wurde abgebrochen: " + problem.detail;
    }
    return problem.detail;
}

std::wstring ProblemReason(const TProblem& problem, TSystemText systemText) {
    if (problem.what == TProblemKind::ShareRefused && problem.code == kOtherCredentials) {
        return L"Mit diesem Server besteht schon eine Verbindung unter anderem Namen. Sie endet mit der "
               L"Eingabe: net use " +
               problem.path + L" /delete";
    }
    const bool saysItself = problem.what == TProblemKind::ShareRefused;
    return problem.code != 0 && !saysItself ? systemText(problem.code) : std::wstring();
}

TProblem ProblemOf(const std::exception& error) {
    if (const auto* carried = dynamic_cast<const EProblem*>(&error)) {
        return carried->Problem();
    }
    return {.what = TProblemKind::Unexpected, .detail = FromUtf8Lossy(error.what())};
}
