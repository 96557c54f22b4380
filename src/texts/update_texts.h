// What the update check says. Its English texts are older than the rest of this program, and known.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/number_text.h"

namespace UpdateTexts {

inline constexpr wchar_t Window[] = L"Vardeko Update";
inline constexpr wchar_t Status[] = L"Status";
inline constexpr wchar_t Search[] = L"Nach Updates Suchen";
inline constexpr wchar_t Update[] = L"Update";
inline constexpr wchar_t Cancel[] = L"Abbrechen";

inline constexpr wchar_t Searching[] = L"Prüfe auf Updates..";
inline constexpr wchar_t NoUpdate[] = L"Im Moment ist kein Update verfügbar";
inline constexpr wchar_t NewerVersion[] = L"Neuere Version: ";
inline constexpr wchar_t HowToUpdate[] =
    L"Klicken Sie auf Update, um eine neuere Version von Vardeko zu erhalten";
inline constexpr wchar_t BadInformation[] = L"Die Angaben des Servers zum Update sind ungültig";
inline constexpr wchar_t NoServer[] =
    L"Der Server ist nicht zu erreichen. Prüfen Sie, ob der PC mit dem Internet verbunden ist.";
inline constexpr wchar_t NoSecureConnection[] =
    L"Mit dem Server ist keine sichere Verbindung möglich. Prüfen Sie Datum und Uhrzeit des PCs.";
inline constexpr wchar_t BadPage[] = L"Die Adresse der Seite ist ungültig";

inline constexpr wchar_t Confirmation[] = L"Bestätigung";
inline constexpr wchar_t UpdateQuestion[] = L"Möchten Sie Vardeko aktualisieren?";
inline constexpr wchar_t Ok[] = L"OK";
inline constexpr wchar_t Error[] = L"Error";
inline constexpr wchar_t Message[] = L"Message";
inline constexpr wchar_t Stopped[] = L"Process stopped";
inline constexpr wchar_t FinishedWithWarnings[] = L"Process completed with some warnings";

// The progress of a download, with the separators of the user's locale.
inline std::wstring Transfer(std::uint64_t bytesDone, double bytesPerSecond,
                             std::wstring_view decimalSeparator, std::wstring_view thousandSeparator) {
    const auto kilobytes = [&](double bytes) {
        return NumberText(bytes / 1024, 2, decimalSeparator, thousandSeparator);
    };
    return kilobytes(static_cast<double>(bytesDone)) + L" Kb, speed " + kilobytes(bytesPerSecond) +
           L" Kb/sec";
}

}  // namespace UpdateTexts
