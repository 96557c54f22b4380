// The list of extensions: items that are quoted again read as the same items.
#include "engine/extension_filter.h"
#include "fuzz_input.h"

namespace {

std::wstring Quoted(const std::wstring& item) {
    std::wstring quoted = L"\"";
    for (const wchar_t letter : item) {
        quoted += letter == L'"' ? L"\"\"" : std::wstring(1, letter);
    }
    return quoted + L"\"";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = AsText(data, size);
    const auto items = ParseCommaText(text);
    std::wstring again;
    for (const std::wstring& item : items) {
        again += again.empty() ? Quoted(item) : L"," + Quoted(item);
    }
    Require(ParseCommaText(again) == items);
    const TExtensionFilter filter(text, ParseExtensionMode(text.substr(0, 2)),
                                  [](std::wstring_view name) { return std::wstring(name); });
    static_cast<void>(filter.Passes(text));
    return 0;
}
