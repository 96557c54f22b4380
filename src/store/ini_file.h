// Settings text in sections, as "NASConf.ini" holds it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/text.h"

// An INI file in memory: answers for keys, changes values, and keeps everything else (comments, foreign
// sections and keys, order, line ends, encoding) as it was. Section and key names are compared without
// regard to the case of a to z and to white space around them. Of two keys of the same name the first
// counts, also when the section occurs twice.
class TIniFile {
public:
    // An empty file, as a missing one counts.
    TIniFile() = default;
    // The bytes of a file: UTF-8 or UTF-16 when a byte order mark says so, else the code page.
    TIniFile(std::string_view bytes, const TCodePage& codePage);

    // The value without white space around it and without one pair of double quotes around the rest, which
    // protects white space. The system's own routines remove that pair too.
    std::optional<std::wstring> Text(std::wstring_view section, std::wstring_view key) const;
    // True for every whole number but 0; the default when the key is missing or its value is no number.
    bool Boolean(std::wstring_view section, std::wstring_view key, bool defaultValue) const;
    // Nothing when the key is missing or its value is no whole number of 32 bits.
    std::optional<std::int32_t> Number(std::wstring_view section, std::wstring_view key) const;

    // Sets a value; one that is as wanted is left as it is written. A missing key is added behind the last
    // one of its section, a missing section at the end. A value that Text would not give back as it is is put
    // in quotes; line breaks in it become blanks.
    void SetText(std::wstring_view section, std::wstring_view key, std::wstring_view value);
    void SetBoolean(std::wstring_view section, std::wstring_view key, bool value);

    // The bytes of the file in the encoding it came in, lines that were not changed byte for byte, whether or
    // not they are text; UTF-16 with its mark when the text has become one that the code page cannot hold.
    std::string Bytes(const TCodePage& codePage) const;

private:
    enum class TEncoding { CodePage, Utf8, Utf16LittleEndian, Utf16BigEndian };
    struct TLine {
        std::wstring text;
        std::wstring end;                  // the line break, empty at the end of the file
        std::optional<std::string> bytes;  // of the text as the file holds it, until it is changed
    };

    void ParseUtf16(std::string_view bytes);
    void ParseBytes(std::string_view bytes, const TCodePage& codePage);
    std::wstring AllText() const;
    // Nothing when the code page cannot hold a changed line.
    std::optional<std::string> LinesAsBytes(const TCodePage& codePage) const;
    // The index of the line that holds the key.
    std::optional<std::size_t> FindKey(std::wstring_view section, std::wstring_view key) const;
    // The index behind the last line of the section that is not blank.
    std::optional<std::size_t> EndOfSection(std::wstring_view section) const;
    void InsertLine(std::size_t index, std::wstring text);

    TEncoding encoding_ = TEncoding::CodePage;
    std::vector<TLine> lines_;
};
