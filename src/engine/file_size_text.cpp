#include "engine/file_size_text.h"

#include <cmath>
#include <cstdint>

namespace {

// Half a unit of the last place is rounded up.
std::wstring WithDecimals(double value, int decimals, std::wstring_view separator) {
    std::int64_t scale = 1;
    for (int place = 0; place < decimals; ++place) {
        scale *= 10;
    }
    const auto scaled = static_cast<std::int64_t>(std::floor(value * static_cast<double>(scale) + 0.5));
    std::wstring text = std::to_wstring(scaled / scale);
    if (decimals > 0) {
        std::wstring fraction = std::to_wstring(scaled % scale);
        fraction.insert(0, static_cast<std::size_t>(decimals) - fraction.size(), L'0');
        text += separator;
        text += fraction;
    }
    return text;
}

}  // namespace

std::wstring FileSizeText(double bytes, std::wstring_view decimalSeparator) {
    struct TUnit {
        const wchar_t* name;
        int decimals;
        double limit;
    };
    constexpr TUnit kUnits[] = {
        {L" B", 0, 1000}, {L" KB", 1, 1000}, {L" MB", 2, 1000}, {L" GB", 2, 1000}, {L" TB", 2, 1024}};
    double value = bytes;
    for (const TUnit& unit : kUnits) {
        if (value < unit.limit) {
            return WithDecimals(value, unit.decimals, decimalSeparator) + unit.name;
        }
        value /= 1024;
    }
    return {};
}
