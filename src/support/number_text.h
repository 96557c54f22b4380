// Numbers as people read them.
#pragma once

#include <string>
#include <string_view>

// A number with a fixed count of decimals (0 to 6), the last one rounded, half a unit up. Below zero reads as
// zero, and what is above 10^12 as that.
std::wstring NumberText(double value, int decimals, std::wstring_view decimalSeparator,
                        std::wstring_view thousandSeparator = {});
