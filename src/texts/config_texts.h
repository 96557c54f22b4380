// What the configuration window says.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ConfigTexts {

inline constexpr wchar_t Window[] = L"Config COPY";
inline constexpr wchar_t Close[] = L"Schließen";
inline constexpr wchar_t InsertFolder[] = L"Ordner einfügen";
inline constexpr wchar_t BackupFolder[] = L"Backup  ->";
inline constexpr wchar_t ChooseBackupFolder[] = L"Backup-Ordner wählen";
inline constexpr wchar_t OtherUser[] = L"Unter anderem User anmelden";
inline constexpr wchar_t User[] = L"Anmeldename";
inline constexpr wchar_t Password[] = L"Passwort";
inline constexpr wchar_t FolderPicker[] = L"Select Directory to copy...";

inline constexpr wchar_t Folders[] = L"Zu sichernde Ordner";
inline constexpr wchar_t NoFolders[] = L"Noch keine Ordner. „Ordner einfügen“ fügt den ersten hinzu.";
inline constexpr wchar_t DeleteFolder[] = L"Ordner aus der Liste entfernen …";
inline constexpr wchar_t Active[] = L"Aktiv";
inline constexpr wchar_t History[] = L"History";
inline constexpr wchar_t Folder[] = L"Ordner";
inline constexpr wchar_t Subfolders[] = L"Unterordner";
inline constexpr wchar_t Hidden[] = L"Unsichtbare";
inline constexpr wchar_t FileTypes[] = L"Dateityp";
inline constexpr wchar_t Mode[] = L"Modus";
// The hints of the columns.
inline constexpr wchar_t ActiveHint[] = L"Nur Zeilen mit Haken werden gesichert.";
inline constexpr wchar_t HistoryHint[] =
    L"Hebt die bisherige Kopie mit einer Nummer auf. Es zählt nur der Haken der Zeile mit der Markierung ▸.";
inline constexpr wchar_t FolderHint[] = L"Der Ordner, der gesichert wird.";
inline constexpr wchar_t SubfoldersHint[] = L"Mit Haken gehören alle Unterordner dazu.";
inline constexpr wchar_t HiddenHint[] = L"Mit Haken werden auch versteckte Unterordner gesichert.";
inline constexpr wchar_t FileTypesHint[] =
    L"Dateiendungen mit Punkt, durch Komma getrennt. Sie wirken erst, wenn der Modus nicht auf „Aus“ steht.";
inline constexpr wchar_t ModeHint[] =
    L"Welche Dateitypen gesichert werden. Für alle Ordner gilt der Filter der letzten Zeile mit Haken bei "
    L"„Aktiv“, deren Ordner vorhanden ist.";

inline constexpr wchar_t ModeOff[] = L"Aus";
inline constexpr wchar_t ModeInclude[] = L"Einschließen";
inline constexpr wchar_t ModeExclude[] = L"Ausschließen";

inline std::wstring FolderMissing(const std::wstring& folder) {
    return L"Der Ordner „" + folder + L"“ ist nicht vorhanden.";
}

inline constexpr wchar_t FolderNotThere[] =
    L"Der Ordner dieser Zeile ist nicht vorhanden oder nicht erreichbar.";

// What the next run makes of the rows; `row` and `rows` count from 1, there is at least one.
inline std::wstring FoldersNotThere(const std::vector<std::size_t>& rows) {
    if (rows.size() == 1) {
        return L"Der Ordner in Zeile " + std::to_wstring(rows.front()) +
               L" ist nicht vorhanden oder nicht erreichbar.";
    }
    std::wstring list = std::to_wstring(rows.front());
    for (std::size_t index = 1; index < rows.size(); ++index) {
        list += (index + 1 < rows.size() ? L", " : L" und ") + std::to_wstring(rows[index]);
    }
    return L"Die Ordner in den Zeilen " + list + L" sind nicht vorhanden oder nicht erreichbar.";
}

inline std::wstring FilterOfRow(std::size_t row, const std::wstring& folder) {
    return L"Nicht alle Zeilen haben denselben Filter: Für alle Ordner gilt der von Zeile " +
           std::to_wstring(row) + L" („" + folder + L"“).";
}

inline std::wstring HistoryOfRow(std::size_t row, const std::wstring& folder, bool checked) {
    return L"„History“ ist nicht in allen Zeilen gleich: Es zählt die Zeile mit der Markierung ▸, zurzeit "
           L"Zeile " +
           std::to_wstring(row) + L" („" + folder + (checked ? L"“), mit Haken." : L"“), ohne Haken.");
}

// `reason`: in the words of the system.
inline std::wstring NoFolderPicker(const std::wstring& reason) {
    return L"Die Ordnerauswahl meldet einen Fehler: " + reason;
}

inline std::wstring DeleteQuestion(const std::wstring& folder) {
    return L"Den Ordner „" + folder +
           L"“ aus der Liste entfernen?\n\nEr wird dann nicht mehr gesichert. Was schon gesichert ist, "
           L"bleibt erhalten.";
}

// `problem`: why the settings could not be saved.
inline std::wstring CloseQuestion(const std::wstring& problem) {
    return problem +
           L"\n\nDas Fenster trotzdem schließen? Die Änderungen an Backup-Ordner und Anmeldung "
           L"gehen dann verloren.";
}

}  // namespace ConfigTexts
