// Which files of a source folder are looked at, by their extensions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class TExtensionMode { OnlyListed = 0, AllButListed = 1, All = 2 };

// "IN" and "EX" in any case of letters; every other text means all files.
TExtensionMode ParseExtensionMode(std::wstring_view text);

// The items of a comma text: separated by commas or white space, an item in double quotes may hold either
// (a doubled quote stands for one). White space around items is skipped; a comma at the very end adds one
// empty item.
std::vector<std::wstring> ParseCommaText(std::wstring_view text);

// Lets files pass by their extension, dot included; a file without one has the empty extension. Case of
// letters makes no difference.
class TExtensionFilter {
public:
    // Lets everything pass.
    TExtensionFilter() = default;
    // The folding makes names comparable (the file system's upper case in the program).
    TExtensionFilter(std::wstring_view extensions, TExtensionMode mode,
                     std::wstring (*foldCase)(std::wstring_view));

    bool Passes(std::wstring_view fileName) const;

private:
    TExtensionMode mode_ = TExtensionMode::All;
    std::vector<std::wstring> foldedExtensions_;
    std::wstring (*foldCase_)(std::wstring_view) = nullptr;
};
