#include "support/number_text.h"

#include <algorithm>
#include <cmath>

std::wstring NumberText(double value, int decimals, std::wstring_view decimalSeparator,
                        std::wstring_view thousandSeparator) {
    const auto places = static_cast<std::size_t>(decimals);
    double scale = 1;
    for (int place = 0; place < decimals; ++place) {
        scale *= 10;
    }
    std::wstring text = std::to_wstring(std::llround(std::clamp(value, 0.0, 1e12) * scale));
    // At least one digit before the separator.
    text.insert(0, places + 1 - std::min(text.size(), places + 1), L'0');
    const std::wstring fraction = text.substr(text.size() - places);
    text.resize(text.size() - places);
    for (std::size_t position = text.size(); position > 3;) {
        position -= 3;
        text.insert(position, thousandSeparator);
    }
    if (!fraction.empty()) {
        text += decimalSeparator;
        text += fraction;
    }
    return text;
}
