#include "engine/file_size_text.h"

#include "support/number_text.h"

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
            return NumberText(value, unit.decimals, decimalSeparator) + unit.name;
        }
        value /= 1024;
    }
    return {};
}
