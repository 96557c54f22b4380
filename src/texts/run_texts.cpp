#include "texts/run_texts.h"

#include "support/number_text.h"

std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator) {
    return L"Das Backup benötigte " + NumberText(minutes, 2, decimalSeparator) + L" min";
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

std::wstring ErrorLogText(std::wstring_view source) {
    return std::wstring(source) + L" Copy Error";
}
