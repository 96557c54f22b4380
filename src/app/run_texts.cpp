#include "app/run_texts.h"

#include <cmath>

std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator) {
    const long long hundredths = std::llround(minutes * 100);
    const std::wstring fraction = std::to_wstring(hundredths % 100);
    return L"Das Backup benötigte " + std::to_wstring(hundredths / 100) + std::wstring(decimalSeparator) +
           std::wstring(2 - fraction.size(), L'0') + fraction + L" min";
}
