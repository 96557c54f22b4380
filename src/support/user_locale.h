// How the user writes numbers.
#pragma once

#include <string>

// What stands before the decimals: the user's choice, "," when there is none.
std::wstring DecimalSeparator();

// What stands between groups of three digits; may be empty.
std::wstring ThousandSeparator();
