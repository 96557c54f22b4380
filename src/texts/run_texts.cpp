#include "texts/run_texts.h"

#include "support/number_text.h"

std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator) {
    return L"Das Backup benötigte " + NumberText(minutes, 2, decimalSeparator) + L" min";
}

std::wstring CheckTimeText(double minutes, std::wstring_view decimalSeparator) {
    return L"Die Prüfung benötigte " + NumberText(minutes, 2, decimalSeparator) + L" min";
}

std::wstring VerifiedText(const TVerifyCounts& counts) {
    std::wstring text = counts.isComplete ? L"Prüfung: " : L"Prüfung, nicht beendet: ";
    text += std::to_wstring(counts.files) + (counts.files == 1 ? L" Datei" : L" Dateien") + L" angesehen, " +
            std::to_wstring(counts.good) + (counts.good == 1 ? L" Kopie gut" : L" Kopien gut");
    const auto add = [&text](std::uint64_t count, const wchar_t* what) {
        if (count != 0) {
            text += L", " + std::to_wstring(count) + L" " + what;
        }
    };
    add(counts.bad, L"schlecht");
    add(counts.toBeCopied, L"noch zu kopieren");
    add(counts.inUse, L"in Benutzung");
    add(counts.cloudFiles, L"nur in der Cloud");
    return text;
}

std::wstring BadCopiesText(std::uint64_t copies) {
    return L"Prüfung: " + std::to_wstring(copies) +
           (copies == 1 ? L" schlechte Kopie gefunden" : L" schlechte Kopien gefunden");
}

std::wstring ComparedText(std::int64_t files) {
    return L"Dateivergleich mit " + std::to_wstring(files) + L" Dateien abgeschlossen";
}

std::wstring CloudFilesText(std::int64_t files) {
    return std::to_wstring(files) + L" Dateien liegen nur in der Cloud und wurden nicht geholt";
}

std::wstring WaitingForDestinationText(std::wstring_view destination) {
    return L"Warte auf das Ziel: " + std::wstring(destination);
}

std::wstring WaitingForOtherRunText(std::wstring_view destination) {
    return L"Ein anderer Lauf sichert gerade hierhin, warte auf sein Ende: " + std::wstring(destination);
}

std::wstring FailuresText(std::uint64_t files, std::uint64_t folders, std::uint64_t others,
                          bool onlyChecked) {
    std::wstring text;
    const auto add = [&text](std::uint64_t count, const wchar_t* one, const wchar_t* many) {
        if (count != 0) {
            text += (text.empty() ? L"" : L", ") + std::to_wstring(count) + L" " + (count == 1 ? one : many);
        }
    };
    add(files, L"Datei nicht kopiert", L"Dateien nicht kopiert");
    add(folders, L"Ordner nicht vollständig gelesen", L"Ordner nicht vollständig gelesen");
    add(others, L"anderer Fehler", L"andere Fehler");
    return (onlyChecked ? L"Nicht alles geprüft: " : L"Nicht alles gesichert: ") + text;
}

std::wstring ErrorLogText(std::wstring_view source) {
    return std::wstring(source) + L" Copy Error";
}
