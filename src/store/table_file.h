// The binary format of a memory table's file: the one definition that reading and writing share, for
// "NASConf.Dat" and "Vardeko.dat" alike. The layout, byte by byte, is in docs/file-formats.md.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "support/date_time.h"
#include "support/text.h"

static_assert(std::endian::native == std::endian::little, "numbers are copied to and from files as they are");

inline constexpr std::string_view kTableSignature = "Ver";
inline constexpr double kTableVersion = 1.91;

enum class TFieldType : std::uint16_t { Text = 1, Boolean = 5, DateTime = 11 };

inline constexpr std::int32_t kBooleanSize = 2;
inline constexpr std::int32_t kDateTimeSize = 8;

// One field as the header of a file describes it.
struct TFieldDescriptor {
    std::string_view name;  // ASCII
    TFieldType type;
    std::int32_t size;  // characters of a text, else bytes of the value
};

// A date-time on file counts milliseconds from the day before 1 January of year 1.
inline constexpr std::int64_t kMillisecondsToDayZero = std::int64_t{693594} * kMillisecondsPerDay;
// What is accepted: from 1 January of year 1 to the end of 32767. A file time on disk reaches the year 30828,
// and whatever a table can hold must be readable again.
inline constexpr double kEarliestFileTime = static_cast<double>(kMillisecondsPerDay);
inline constexpr double kEndOfFileTimes = 11'967'901.0 * static_cast<double>(kMillisecondsPerDay);

inline double ToFileTime(TDateTime date) {
    return static_cast<double>(date.milliseconds + kMillisecondsToDayZero);
}

// Nothing for a value that is no whole millisecond of the accepted years.
inline std::optional<TDateTime> FromFileTime(double value) {
    if (!(value >= kEarliestFileTime && value < kEndOfFileTimes)) {
        return std::nullopt;
    }
    const auto milliseconds = static_cast<std::int64_t>(value);
    if (static_cast<double>(milliseconds) != value) {
        return std::nullopt;
    }
    return TDateTime{milliseconds - kMillisecondsToDayZero};
}

// The bytes of a text on file: those of the code page, or, when that cannot hold the text, a zero byte and
// then UTF-8. Nothing anybody types begins with a zero, so files from before this form read as ever.
std::string EncodeTableText(const TCodePage& codePage, std::wstring_view text);
// The text of such bytes; nothing when they are damaged or the text is longer than `size` characters.
std::optional<std::wstring> DecodeTableText(const TCodePage& codePage, std::string_view bytes,
                                            std::int32_t size);
// The longest encoding of a text of `size` characters.
constexpr std::size_t LongestEncoding(std::int32_t size) {
    return 4 * static_cast<std::size_t>(size) + 1;
}

// Walks over the bytes of a file, checks every step against their end and every value against its field.
// Whatever does not fit throws EProblem (NoTableFile, OtherTableVersion, OtherTableFields, TableDamaged),
// without the path, which whoever read the file adds.
class TTableReader {
public:
    // Reads the header, which must describe exactly these fields. The bytes must outlive the reader.
    TTableReader(std::string_view bytes, std::span<const TFieldDescriptor> fields);

    bool AtEnd() const { return position_ == bytes_.size(); }
    std::size_t Position() const { return position_; }
    // The bytes from an earlier position to this one.
    std::string_view BytesSince(std::size_t start) const { return bytes_.substr(start, position_ - start); }

    // The next value of a record; nothing when it is marked as having none.
    std::optional<bool> ReadBoolean();
    std::optional<TDateTime> ReadDateTime();
    // The stored bytes of a text of at most `size` characters. They are checked for length only.
    std::optional<std::string_view> ReadTextBytes(std::int32_t size);
    std::optional<std::wstring> ReadText(const TCodePage& codePage, std::int32_t size);

    [[noreturn]] void ThrowDamagedAt(std::size_t position) const;

private:
    std::string_view Take(std::size_t count) {
        if (count > bytes_.size() - position_) {
            ThrowDamagedAt(bytes_.size());
        }
        const std::string_view taken = bytes_.substr(position_, count);
        position_ += count;
        return taken;
    }
    template <typename Value>
    Value TakeValue() {
        Value value;
        std::memcpy(&value, Take(sizeof value).data(), sizeof value);
        return value;
    }
    bool TakeHasValue() {
        const auto flag = TakeValue<std::uint8_t>();
        if (flag > 1) {
            ThrowDamagedAt(position_ - 1);
        }
        return flag == 1;
    }

    std::string_view bytes_;
    std::size_t position_ = 0;
};

inline std::optional<TDateTime> TTableReader::ReadDateTime() {
    const bool hasValue = TakeHasValue();
    const auto value = TakeValue<double>();
    if (!hasValue) {
        return std::nullopt;
    }
    const auto date = FromFileTime(value);
    if (!date) {
        ThrowDamagedAt(position_ - sizeof value);
    }
    return date;
}

inline std::optional<std::string_view> TTableReader::ReadTextBytes(std::int32_t size) {
    if (!TakeHasValue()) {
        return std::nullopt;
    }
    const auto count = TakeValue<std::uint32_t>();
    if (count > LongestEncoding(size)) {
        ThrowDamagedAt(position_ - sizeof count);
    }
    return Take(count);
}

// Appends the parts of a table file to a buffer.
class TTableWriter {
public:
    explicit TTableWriter(std::string& bytes) : bytes_(bytes) {}

    void WriteHeader(std::span<const TFieldDescriptor> fields);
    void WriteBoolean(std::optional<bool> value);
    void WriteDateTime(std::optional<TDateTime> value);
    void WriteText(const TCodePage& codePage, const std::optional<std::wstring>& text);

private:
    template <typename Value>
    void Put(Value value) {
        const auto raw = std::bit_cast<std::array<char, sizeof(Value)>>(value);
        bytes_.append(raw.data(), raw.size());
    }

    std::string& bytes_;
};
