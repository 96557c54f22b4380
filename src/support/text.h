// Conversions between the program's text (std::wstring: UTF-16 on Windows) and bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The bytes of a text in UTF-8. A surrogate without its partner, which file names may hold, becomes three
// bytes of its own, so that every text survives the way there and back.
std::string ToUtf8(std::wstring_view text);

// The text of UTF-8 bytes as ToUtf8 writes them; nothing when they are not such bytes (overlong forms,
// values above U+10FFFF and cut sequences included).
std::optional<std::wstring> FromUtf8(std::string_view bytes);

// The text with each invalid byte of the UTF-8 read as U+FFFD: for text that is only shown.
std::wstring FromUtf8Lossy(std::string_view bytes);

// The letters a to z in upper case, everything else as it is.
std::wstring AsciiUpperCase(std::wstring_view text);

// Whether two texts are equal when the letters a to z count as A to Z.
bool EqualsIgnoringAsciiCase(std::wstring_view left, std::wstring_view right);

// The text without the white space (blank, tab, line breaks) around it.
std::wstring_view TrimWhiteSpace(std::wstring_view text);

// The text with a blank for every run of control characters, such as the line breaks in some of the system's
// sentences.
std::wstring InOneLine(std::wstring_view text);

// A single-byte (or double-byte) encoding in which files store text: the system code page in the program,
// a fixed one in tests.
class TCodePage {
public:
    virtual ~TCodePage() = default;

    // The bytes of the text; nothing when the code page cannot hold it, that is when decoding the bytes
    // would not give the text back.
    virtual std::optional<std::string> Encode(std::wstring_view text) const = 0;

    // The text of the bytes; bytes without a meaning become the code page's default character.
    virtual std::wstring Decode(std::string_view bytes) const = 0;
};
