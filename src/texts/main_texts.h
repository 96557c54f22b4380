// What the main window says; of its runs, run_texts.h and run_log_text.h.
#pragma once

#include <string>

namespace MainTexts {

inline constexpr wchar_t Program[] = L"Vardeko";
inline constexpr wchar_t Window[] = L"Vardeko x64";

// Each action's caption, its hint where that is another, and its keys.
inline constexpr wchar_t Close[] = L"Beenden";
inline constexpr wchar_t CloseKeys[] = L"Strg+Q";
inline constexpr wchar_t StartCopy[] = L"Kopieren";
inline constexpr wchar_t StartCopyKeys[] = L"F5";
inline constexpr wchar_t StopCopy[] = L"Anhalten";
inline constexpr wchar_t StopCopyKeys[] = L"Umschalt+F5";
inline constexpr wchar_t Configure[] = L"Einstellen";
inline constexpr wchar_t ConfigureKeys[] = L"Strg+E";
inline constexpr wchar_t ShutDown[] = L"Shutdown after copy";
inline constexpr wchar_t ShutDownHint[] = L"PC nach dem Kopieren herunterfahren";
inline constexpr wchar_t ShutDownKeys[] = L"Strg+H";
inline constexpr wchar_t Reindex[] = L"Reindex NAS DB";
inline constexpr wchar_t ReindexHint[] = L"Reindex";
inline constexpr wchar_t ReindexKeys[] = L"Strg+Umschalt+R";
inline constexpr wchar_t Update[] = L"Update";
inline constexpr wchar_t UpdateKeys[] = L"Strg+U";
inline constexpr wchar_t Verify[] = L"Sicherung prüfen";
inline constexpr wchar_t VerifyKeys[] = L"Strg+P";
inline constexpr wchar_t OpenRunLog[] = L"Laufprotokoll öffnen";
inline constexpr wchar_t OpenRunLogKeys[] = L"Strg+L";
inline constexpr wchar_t NextError[] = L"Nächster Fehler";
inline constexpr wchar_t NextErrorKeys[] = L"F8";
inline constexpr wchar_t PreviousError[] = L"Voriger Fehler";
inline constexpr wchar_t PreviousErrorKeys[] = L"Umschalt+F8";
inline constexpr wchar_t Minimize[] = L"Minimize";
inline constexpr wchar_t About[] = L"About Vardeko";

inline constexpr wchar_t CurrentFile[] = L"Datei:";
inline constexpr wchar_t StatusList[] = L"Meldungen";
inline constexpr wchar_t NothingYet[] = L"Noch kein Lauf. F5 kopiert, Strg+E stellt ein.";
inline constexpr wchar_t Version[] = L"Version";

// In the status list's menu. Not just "Kopieren": that is what the button says that starts a run.
inline constexpr wchar_t CopyRows[] = L"Zeilen kopieren";
inline constexpr wchar_t CopyRowsKeys[] = L"Strg+C";
inline constexpr wchar_t ShowFile[] = L"Im Ordner zeigen";
inline constexpr wchar_t ShowCopy[] = L"Kopie im Backup zeigen";

// Shown by the system.
inline constexpr wchar_t ShutDownMessage[] = L"Vardeko Shutdown in progress";

// Rows of the status list. `time`: date and time, as the user writes them.
inline std::wstring Started(const std::wstring& time) {
    return L"Start: " + time;
}

inline std::wstring Finished(const std::wstring& time) {
    return L"Fertig: " + time;
}

inline std::wstring StoppedByUser(const std::wstring& time) {
    return L"Anwender Abbruch: " + time;
}

inline std::wstring NotShown(const std::wstring& path) {
    return L"Der Ordner lässt sich nicht öffnen: " + path;
}

inline std::wstring NotFound(const std::wstring& path) {
    return L"Nicht gefunden: " + path;
}

inline std::wstring ReindexEnded(const std::wstring& time) {
    return L"Ende: " + time;
}

}  // namespace MainTexts
