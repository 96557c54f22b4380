// What a run and a reindex say, besides what went wrong.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "Das Backup benötigte 1,50 min", with the given decimal separator.
std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator);

// "Dateivergleich mit 12 Dateien abgeschlossen".
std::wstring ComparedText(std::int64_t files);

// "Die Prüfung benötigte 1,50 min".
std::wstring CheckTimeText(double minutes, std::wstring_view decimalSeparator);

// What came of a check of the backup.
struct TVerifyCounts {
    std::uint64_t files = 0;  // looked at; each is one of the four below
    std::uint64_t good = 0;
    std::uint64_t bad = 0;
    std::uint64_t toBeCopied = 0;  // newer than their copies
    std::uint64_t inUse = 0;       // not compared
    std::uint64_t cloudFiles = 0;  // not fetched, and so not looked at
    std::uint64_t bytes = 0;       // compared
    bool isComplete = false;       // it came to its end
};

// "Prüfung: 120 Dateien angesehen, 117 Kopien gut, 2 schlecht, 1 noch zu kopieren". Numbers of 0 are left
// out, the good ones excepted.
std::wstring VerifiedText(const TVerifyCounts& counts);

// The row on top of all, when a check found any.
std::wstring BadCopiesText(std::uint64_t copies);

// For the run's log.
std::wstring CloudFilesText(std::int64_t files);

// What a run that failed in something says at its end: "Nicht alles gesichert: 3 Dateien nicht kopiert, 1
// Ordner nicht vollständig gelesen". Numbers of 0 are left out.
// A run that only checks says "Nicht alles geprüft".
std::wstring FailuresText(std::uint64_t files, std::uint64_t folders, std::uint64_t others,
                          bool onlyChecked = false);

// In the status bar until the first file of a check is read.
inline constexpr wchar_t kCheckingText[] = L"Prüfe die Sicherung..";

inline constexpr wchar_t kSearchingText[] = L"Suche nach veränderten Daten..";

// Shown as the current path while a run waits.
std::wstring WaitingForDestinationText(std::wstring_view destination);
std::wstring WaitingForOtherRunText(std::wstring_view destination);

// What the error log says of a file that was not copied; English, and known.
std::wstring ErrorLogText(std::wstring_view source);

// Shown by Windows when it is to shut down in mid-run.
inline constexpr wchar_t kRunIsOnText[] = L"Die Sicherung läuft noch und würde abgebrochen.";

// Asked before the hash table is rebuilt; the line break is meant to be in this order.
inline constexpr wchar_t kReindexQuestion[] =
    L"Diese Funktion wird nur benötigt um einen neuen Index eines bestehenden NAS Backups früherer "
    L"Versionen zu erstellen.\n\rWeitere Informationen finden Sie im Forum unter Vardeko ReIndex";
