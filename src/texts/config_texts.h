// What the configuration window says.
#pragma once

#include <string>

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
inline constexpr wchar_t ModeOff[] = L"Aus";
inline constexpr wchar_t ModeInclude[] = L"Einschließen";
inline constexpr wchar_t ModeExclude[] = L"Ausschließen";

inline std::wstring FolderMissing(const std::wstring& folder) {
    return L"Der Ordner „" + folder + L"“ ist nicht vorhanden.";
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
