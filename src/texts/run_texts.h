// What a run and a reindex say, besides what went wrong.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "Das Backup benötigte 1,50 min", with the given decimal separator.
std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator);

// "Dateivergleich mit 12 Dateien abgeschlossen".
std::wstring ComparedText(std::int64_t files);

// For the run's log.
std::wstring CloudFilesText(std::int64_t files);

// What a run that failed in something says at its end: "Nicht alles gesichert: 3 Dateien nicht kopiert, 1
// Ordner nicht vollständig gelesen". Numbers of 0 are left out.
std::wstring FailuresText(std::uint64_t files, std::uint64_t folders, std::uint64_t others);

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
