#include "support/system_code_page.h"

#include <windows.h>

std::optional<std::string> TSystemCodePage::Encode(std::wstring_view text) const {
    if (text.empty()) {
        return std::string();
    }
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    if (Decode(bytes) != text) {
        return std::nullopt;
    }
    return bytes;
}

std::wstring TSystemCodePage::Decode(std::string_view bytes) const {
    if (bytes.empty()) {
        return {};
    }
    const int size = static_cast<int>(bytes.size());
    // cppcheck-suppress invalidLifetime ; takes the parameter for the caller's variable of that name
    const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), length);
    return text;
}
