#include "store/table_file.h"

#include "support/problem.h"

namespace {

std::string HeaderOf(std::span<const TFieldDescriptor> fields) {
    std::string header;
    TTableWriter(header).WriteHeader(fields);
    return header;
}

}  // namespace

std::string EncodeTableText(const TCodePage& codePage, std::wstring_view text) {
    if (!text.starts_with(L'\0')) {
        if (auto bytes = codePage.Encode(text)) {
            return *std::move(bytes);
        }
    }
    return '\0' + ToUtf8(text);
}

std::optional<std::wstring> DecodeTableText(const TCodePage& codePage, std::string_view bytes,
                                            std::int32_t size) {
    if (bytes.size() > LongestEncoding(size)) {
        return std::nullopt;
    }
    std::optional<std::wstring> text;
    if (bytes.starts_with('\0')) {
        text = FromUtf8(bytes.substr(1));
    } else {
        text = codePage.Decode(bytes);
    }
    if (text && text->size() > static_cast<std::size_t>(size)) {
        return std::nullopt;
    }
    return text;
}

TTableReader::TTableReader(std::string_view bytes, std::span<const TFieldDescriptor> fields) : bytes_(bytes) {
    if (bytes_.size() < kTableSignature.size() || Take(kTableSignature.size()) != kTableSignature) {
        throw EProblem({.what = TProblemKind::NoTableFile});
    }
    if (TakeValue<double>() != kTableVersion) {
        throw EProblem({.what = TProblemKind::OtherTableVersion});
    }
    const std::size_t descriptors = position_;
    const auto fieldCount = TakeValue<std::uint32_t>();
    const std::string expected = HeaderOf(fields).substr(descriptors);
    const std::string_view found = bytes_.substr(descriptors, expected.size());
    if (found.size() < expected.size() && fieldCount == fields.size()) {
        ThrowDamagedAt(bytes_.size());
    }
    if (found != expected) {
        throw EProblem({.what = TProblemKind::OtherTableFields});
    }
    position_ = descriptors + expected.size();
}

std::optional<bool> TTableReader::ReadBoolean() {
    const bool hasValue = TakeHasValue();
    const auto value = TakeValue<std::uint16_t>();
    return hasValue ? std::optional(value != 0) : std::nullopt;
}

std::optional<std::wstring> TTableReader::ReadText(const TCodePage& codePage, std::int32_t size) {
    const std::size_t start = position_;
    const auto bytes = ReadTextBytes(size);
    if (!bytes) {
        return std::nullopt;
    }
    auto text = DecodeTableText(codePage, *bytes, size);
    if (!text) {
        ThrowDamagedAt(start);
    }
    return text;
}

void TTableReader::ThrowDamagedAt(std::size_t position) const {
    throw EProblem({.what = TProblemKind::TableDamaged, .number = position, .limit = bytes_.size()});
}

void TTableWriter::WriteHeader(std::span<const TFieldDescriptor> fields) {
    bytes_ += kTableSignature;
    Put(kTableVersion);
    Put(static_cast<std::uint32_t>(fields.size()));
    for (const TFieldDescriptor& field : fields) {
        Put(field.size);
        Put(field.type);
        Put(static_cast<std::uint16_t>(field.name.size() + 1));
        bytes_ += field.name;
        bytes_ += '\0';
    }
}

void TTableWriter::WriteBoolean(std::optional<bool> value) {
    Put(static_cast<std::uint8_t>(value.has_value()));
    Put(static_cast<std::uint16_t>(value.value_or(false)));
}

void TTableWriter::WriteDateTime(std::optional<TDateTime> value) {
    Put(static_cast<std::uint8_t>(value.has_value()));
    Put(value ? ToFileTime(*value) : 0.0);
}

void TTableWriter::WriteText(const TCodePage& codePage, const std::optional<std::wstring>& text) {
    Put(static_cast<std::uint8_t>(text.has_value()));
    if (text) {
        const std::string bytes = EncodeTableText(codePage, *text);
        Put(static_cast<std::uint32_t>(bytes.size()));
        bytes_ += bytes;
    }
}
