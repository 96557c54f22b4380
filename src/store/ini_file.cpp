#include "store/ini_file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "support/utf16.h"

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleEndianMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";
constexpr std::wstring_view kDefaultLineEnd = L"\r\n";

// A last odd byte is dropped.
std::wstring FromUtf16(std::string_view bytes, bool bigEndian) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto first = static_cast<std::uint8_t>(bytes[index]);
        const auto second = static_cast<std::uint8_t>(bytes[index + 1]);
        const unsigned unit = bigEndian ? first << 8 | second : second << 8 | first;
        if (!kUnitsAreUtf16 && IsLowSurrogate(unit) && !text.empty() &&
            IsHighSurrogate(static_cast<char32_t>(text.back()))) {
            text.back() = static_cast<wchar_t>(JoinSurrogates(static_cast<char32_t>(text.back()), unit));
        } else {
            text += static_cast<wchar_t>(unit);
        }
    }
    return text;
}

std::string ToUtf16(std::wstring_view text, bool bigEndian) {
    std::string bytes;
    bytes.reserve(2 * text.size());
    const auto appendUnit = [&bytes, bigEndian](std::uint32_t unit) {
        const auto low = static_cast<char>(unit & 0xFF);
        const auto high = static_cast<char>(unit >> 8 & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    };
    for (const wchar_t letter : text) {
        const auto value = static_cast<std::uint32_t>(letter);
        if (!kUnitsAreUtf16 && value > 0xFFFF) {
            appendUnit(HighSurrogateOf(value));
            appendUnit(LowSurrogateOf(value));
        } else {
            appendUnit(value);
        }
    }
    return bytes;
}

// Calls visit with each line and its line break: CR LF, CR or LF, nothing at the end of the text.
template <typename TLetter, typename TVisit>
void ForEachLine(std::basic_string_view<TLetter> text, TVisit visit) {
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size() && text[length] != '\r' && text[length] != '\n') {
            ++length;
        }
        const bool isPair = text.size() - length >= 2 && text[length] == '\r' && text[length + 1] == '\n';
        const std::size_t endLength = isPair ? 2 : std::min<std::size_t>(text.size() - length, 1);
        visit(text.substr(0, length), text.substr(length, endLength));
        text.remove_prefix(length + endLength);
    }
}

// The name of the section that a line opens.
std::optional<std::wstring_view> SectionOf(std::wstring_view line) {
    line = TrimWhiteSpace(line);
    const std::size_t close = line.find(L']');
    if (!line.starts_with(L'[') || close == std::wstring_view::npos) {
        return std::nullopt;
    }
    return TrimWhiteSpace(line.substr(1, close - 1));
}

// Where the "=" of a line with a key stands; nothing for comments and other lines.
std::optional<std::size_t> SeparatorOf(std::wstring_view line) {
    const std::wstring_view trimmed = TrimWhiteSpace(line);
    if (trimmed.empty() || trimmed.front() == L';' || trimmed.front() == L'#') {
        return std::nullopt;
    }
    const std::size_t separator = line.find(L'=');
    return separator == std::wstring_view::npos ? std::nullopt : std::optional(separator);
}

bool IsQuoted(std::wstring_view value) {
    return value.size() >= 2 && value.front() == L'"' && value.back() == L'"';
}

std::wstring_view ReadValue(std::wstring_view written) {
    const std::wstring_view value = TrimWhiteSpace(written);
    return IsQuoted(value) ? value.substr(1, value.size() - 2) : value;
}

std::wstring WrittenValue(std::wstring_view value) {
    std::wstring written(value);
    std::replace_if(
        written.begin(), written.end(), [](wchar_t letter) { return letter == L'\r' || letter == L'\n'; },
        L' ');
    return ReadValue(written) == written ? written : L'"' + written + L'"';
}

}  // namespace

TIniFile::TIniFile(std::string_view bytes, const TCodePage& codePage) {
    if (bytes.starts_with(kUtf8Mark)) {
        encoding_ = TEncoding::Utf8;
        ParseBytes(bytes.substr(kUtf8Mark.size()), codePage);
    } else if (bytes.starts_with(kUtf16LittleEndianMark)) {
        encoding_ = TEncoding::Utf16LittleEndian;
        ParseUtf16(bytes.substr(kUtf16LittleEndianMark.size()));
    } else if (bytes.starts_with(kUtf16BigEndianMark)) {
        encoding_ = TEncoding::Utf16BigEndian;
        ParseUtf16(bytes.substr(kUtf16BigEndianMark.size()));
    } else {
        ParseBytes(bytes, codePage);
    }
}

void TIniFile::ParseUtf16(std::string_view bytes) {
    const std::wstring text = FromUtf16(bytes, encoding_ == TEncoding::Utf16BigEndian);
    ForEachLine(std::wstring_view(text), [this](std::wstring_view line, std::wstring_view end) {
        lines_.push_back({std::wstring(line), std::wstring(end), std::nullopt});
    });
}

// The bytes of line breaks are no part of another character in any code page that Windows may be set to.
void TIniFile::ParseBytes(std::string_view bytes, const TCodePage& codePage) {
    ForEachLine(bytes, [this, &codePage](std::string_view line, std::string_view end) {
        const bool isUtf8 = encoding_ == TEncoding::Utf8;
        lines_.push_back({isUtf8 ? FromUtf8Lossy(line) : codePage.Decode(line),
                          std::wstring(end.begin(), end.end()), std::string(line)});
    });
}

std::optional<std::size_t> TIniFile::FindKey(std::wstring_view section, std::wstring_view key) const {
    bool inSection = false;
    for (std::size_t index = 0; index < lines_.size(); ++index) {
        const std::wstring_view line = lines_[index].text;
        if (const auto name = SectionOf(line)) {
            inSection = EqualsIgnoringAsciiCase(*name, section);
        } else if (const auto separator = inSection ? SeparatorOf(line) : std::nullopt) {
            if (EqualsIgnoringAsciiCase(TrimWhiteSpace(line.substr(0, *separator)), key)) {
                return index;
            }
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> TIniFile::EndOfSection(std::wstring_view section) const {
    std::optional<std::size_t> end;
    for (std::size_t index = 0; index < lines_.size(); ++index) {
        const std::wstring_view line = lines_[index].text;
        if (const auto name = SectionOf(line)) {
            if (end) {
                break;
            }
            if (EqualsIgnoringAsciiCase(*name, section)) {
                end = index + 1;
            }
        } else if (end && !TrimWhiteSpace(line).empty()) {
            end = index + 1;
        }
    }
    return end;
}

std::optional<std::wstring> TIniFile::Text(std::wstring_view section, std::wstring_view key) const {
    const auto index = FindKey(section, key);
    if (!index) {
        return std::nullopt;
    }
    const std::wstring_view line = lines_[*index].text;
    return std::wstring(ReadValue(line.substr(*SeparatorOf(line) + 1)));
}

bool TIniFile::Boolean(std::wstring_view section, std::wstring_view key, bool defaultValue) const {
    const std::optional<std::int32_t> number = Number(section, key);
    return number ? *number != 0 : defaultValue;
}

std::optional<std::int32_t> TIniFile::Number(std::wstring_view section, std::wstring_view key) const {
    const std::string number = ToUtf8(Text(section, key).value_or(L""));
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size()) {
        return std::nullopt;
    }
    return value;
}

void TIniFile::SetText(std::wstring_view section, std::wstring_view key, std::wstring_view value) {
    if (Text(section, key) == value) {
        return;
    }
    const std::wstring written = WrittenValue(value);
    if (const auto index = FindKey(section, key)) {
        std::wstring& line = lines_[*index].text;
        line.replace(*SeparatorOf(line) + 1, std::wstring::npos, written);
        lines_[*index].bytes.reset();
        return;
    }
    auto end = EndOfSection(section);
    if (!end) {
        InsertLine(lines_.size(), L'[' + std::wstring(section) + L']');
        end = lines_.size();
    }
    InsertLine(*end, std::wstring(key) + L'=' + written);
}

void TIniFile::SetBoolean(std::wstring_view section, std::wstring_view key, bool value) {
    SetText(section, key, value ? L"1" : L"0");
}

void TIniFile::InsertLine(std::size_t index, std::wstring text) {
    const std::wstring end =
        lines_.empty() || lines_.front().end.empty() ? std::wstring(kDefaultLineEnd) : lines_.front().end;
    if (index > 0 && lines_[index - 1].end.empty()) {
        lines_[index - 1].end = end;
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(index), {std::move(text), end, std::nullopt});
}

std::wstring TIniFile::AllText() const {
    std::wstring text;
    for (const TLine& line : lines_) {
        text += line.text;
        text += line.end;
    }
    return text;
}

std::optional<std::string> TIniFile::LinesAsBytes(const TCodePage& codePage) const {
    std::string bytes;
    for (const TLine& line : lines_) {
        const auto encoded = line.bytes                     ? line.bytes
                             : encoding_ == TEncoding::Utf8 ? std::optional(ToUtf8(line.text))
                                                            : codePage.Encode(line.text);
        if (!encoded) {
            return std::nullopt;
        }
        bytes += *encoded;
        bytes.append(line.end.begin(), line.end.end());
    }
    return bytes;
}

std::string TIniFile::Bytes(const TCodePage& codePage) const {
    if (encoding_ == TEncoding::Utf16BigEndian) {
        return std::string(kUtf16BigEndianMark) + ToUtf16(AllText(), true);
    }
    if (encoding_ == TEncoding::Utf16LittleEndian) {
        return std::string(kUtf16LittleEndianMark) + ToUtf16(AllText(), false);
    }
    const auto bytes = LinesAsBytes(codePage);
    if (!bytes) {
        return std::string(kUtf16LittleEndianMark) + ToUtf16(AllText(), false);
    }
    return encoding_ == TEncoding::Utf8 ? std::string(kUtf8Mark) + *bytes : *bytes;
}
