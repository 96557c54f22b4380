#include "support/text.h"

#include <cstdint>

#include "support/utf16.h"

namespace {

constexpr wchar_t kReplacementCharacter = 0xFFFD;

void AppendCodePoint(std::wstring& text, char32_t value) {
    if (kUnitsAreUtf16 && value > 0xFFFF) {
        text += static_cast<wchar_t>(HighSurrogateOf(value));
        text += static_cast<wchar_t>(LowSurrogateOf(value));
    } else {
        text += static_cast<wchar_t>(value);
    }
}

void AppendUtf8(std::string& bytes, char32_t value) {
    const auto append = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
    if (value < 0x80) {
        append(value);
    } else if (value < 0x800) {
        append(0xC0 | (value >> 6));
        append(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        append(0xE0 | (value >> 12));
        append(0x80 | ((value >> 6) & 0x3F));
        append(0x80 | (value & 0x3F));
    } else {
        append(0xF0 | (value >> 18));
        append(0x80 | ((value >> 12) & 0x3F));
        append(0x80 | ((value >> 6) & 0x3F));
        append(0x80 | (value & 0x3F));
    }
}

// Takes one code point from the front of the bytes; nothing (and nothing taken) when they are invalid.
std::optional<char32_t> TakeCodePoint(std::string_view& bytes) {
    const auto byteAt = [&bytes](std::size_t index) { return static_cast<std::uint8_t>(bytes[index]); };
    const std::uint8_t first = byteAt(0);
    std::size_t length = 0;
    char32_t value = 0;
    char32_t smallest = 0;
    if (first < 0x80) {
        length = 1, value = first, smallest = 0;
    } else if (first >= 0xC0 && first < 0xE0) {
        length = 2, value = first & 0x1F, smallest = 0x80;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3, value = first & 0x0F, smallest = 0x800;
    } else if (first >= 0xF0 && first < 0xF8) {
        length = 4, value = first & 0x07, smallest = 0x10000;
    } else {
        return std::nullopt;
    }
    if (bytes.size() < length) {
        return std::nullopt;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if ((byteAt(index) & 0xC0) != 0x80) {
            return std::nullopt;
        }
        value = (value << 6) | (byteAt(index) & 0x3F);
    }
    if (value < smallest || value > 0x10FFFF) {
        return std::nullopt;
    }
    bytes.remove_prefix(length);
    return value;
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        auto value = static_cast<char32_t>(text[index]);
        if (IsHighSurrogate(value) && index + 1 < text.size() &&
            IsLowSurrogate(static_cast<char32_t>(text[index + 1]))) {
            value = JoinSurrogates(value, static_cast<char32_t>(text[++index]));
        }
        AppendUtf8(bytes, value);
    }
    return bytes;
}

std::optional<std::wstring> FromUtf8(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    bool afterHighSurrogate = false;
    while (!bytes.empty()) {
        const auto value = TakeCodePoint(bytes);
        // Two halves of a pair that come one by one: other bytes than ToUtf8 writes for the pair.
        if (!value || (afterHighSurrogate && IsLowSurrogate(*value))) {
            return std::nullopt;
        }
        afterHighSurrogate = IsHighSurrogate(*value);
        AppendCodePoint(text, *value);
    }
    return text;
}

std::wstring FromUtf8Lossy(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        if (const auto value = TakeCodePoint(bytes)) {
            AppendCodePoint(text, *value);
        } else {
            text += kReplacementCharacter;
            bytes.remove_prefix(1);
        }
    }
    return text;
}

std::wstring AsciiUpperCase(std::wstring_view text) {
    std::wstring result(text);
    for (wchar_t& letter : result) {
        if (letter >= L'a' && letter <= L'z') {
            letter = static_cast<wchar_t>(letter - L'a' + L'A');
        }
    }
    return result;
}

bool EqualsIgnoringAsciiCase(std::wstring_view left, std::wstring_view right) {
    return left.size() == right.size() && AsciiUpperCase(left) == AsciiUpperCase(right);
}

std::wstring_view TrimWhiteSpace(std::wstring_view text) {
    constexpr std::wstring_view kWhiteSpace = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::wstring_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::wstring InOneLine(std::wstring_view text) {
    std::wstring line;
    for (const wchar_t letter : text) {
        if (letter >= L' ') {
            line += letter;
        } else if (!line.ends_with(L' ')) {
            line += L' ';
        }
    }
    return line;
}
