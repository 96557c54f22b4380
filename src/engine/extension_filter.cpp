#include "engine/extension_filter.h"

#include <algorithm>

#include "support/path_text.h"
#include "support/text.h"

namespace {

// Blanks and control characters both separate items.
bool IsWhiteSpace(wchar_t letter) {
    return letter >= 1 && letter <= L' ';
}

void SkipWhiteSpace(std::wstring_view& text) {
    while (!text.empty() && IsWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
}

std::wstring TakeQuotedItem(std::wstring_view& text) {
    std::wstring item;
    text.remove_prefix(1);
    while (!text.empty()) {
        const wchar_t letter = text.front();
        text.remove_prefix(1);
        if (letter != L'"') {
            item += letter;
        } else if (text.starts_with(L'"')) {
            item += letter;
            text.remove_prefix(1);
        } else {
            break;
        }
    }
    return item;
}

std::wstring TakePlainItem(std::wstring_view& text) {
    const auto end = std::find_if(text.begin(), text.end(),
                                  [](wchar_t letter) { return letter == L',' || IsWhiteSpace(letter); });
    std::wstring item(text.begin(), end);
    text.remove_prefix(item.size());
    return item;
}

}  // namespace

TExtensionMode ParseExtensionMode(std::wstring_view text) {
    const std::wstring upper = AsciiUpperCase(text);
    if (upper == L"IN") {
        return TExtensionMode::OnlyListed;
    }
    return upper == L"EX" ? TExtensionMode::AllButListed : TExtensionMode::All;
}

std::vector<std::wstring> ParseCommaText(std::wstring_view text) {
    std::vector<std::wstring> items;
    SkipWhiteSpace(text);
    while (!text.empty()) {
        items.push_back(text.front() == L'"' ? TakeQuotedItem(text) : TakePlainItem(text));
        SkipWhiteSpace(text);
        if (text.starts_with(L',')) {
            text.remove_prefix(1);
            SkipWhiteSpace(text);
            if (text.empty()) {
                items.emplace_back();
            }
        }
    }
    return items;
}

TExtensionFilter::TExtensionFilter(std::wstring_view extensions, TExtensionMode mode,
                                   std::wstring (*foldCase)(std::wstring_view))
    : mode_(mode), foldedExtensions_(ParseCommaText(extensions)), foldCase_(foldCase) {
    for (std::wstring& extension : foldedExtensions_) {
        extension = foldCase_(extension);
    }
}

bool TExtensionFilter::Passes(std::wstring_view fileName) const {
    if (mode_ == TExtensionMode::All) {
        return true;
    }
    const std::wstring extension = foldCase_(ExtensionPart(fileName));
    const bool listed = std::ranges::find(foldedExtensions_, extension) != foldedExtensions_.end();
    return listed == (mode_ == TExtensionMode::OnlyListed);
}
