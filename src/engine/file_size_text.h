// Sizes as people read them.
#pragma once

#include <string>
#include <string_view>

// A count of bytes as "999 B", "1,0 KB", "2,50 MB": the next unit begins at 1000 of the one before (TB ends
// at 1024, above it the text is empty).
std::wstring FileSizeText(double bytes, std::wstring_view decimalSeparator);
