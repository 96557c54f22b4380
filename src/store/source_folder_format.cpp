#include "store/source_folder_format.h"

#include "store/table_file.h"

namespace {

constexpr std::array kFields{
    TFieldDescriptor{"Aktive", TFieldType::Boolean, kBooleanSize},
    TFieldDescriptor{"Directory", TFieldType::Text, static_cast<std::int32_t>(kDirectoryLength)},
    TFieldDescriptor{"Rekursiv", TFieldType::Boolean, kBooleanSize},
    TFieldDescriptor{"Extensions", TFieldType::Text, static_cast<std::int32_t>(kExtensionsLength)},
    TFieldDescriptor{"ExtensionMode", TFieldType::Text, static_cast<std::int32_t>(kExtensionModeLength)},
    TFieldDescriptor{"History", TFieldType::Boolean, kBooleanSize},
    TFieldDescriptor{"Hidden", TFieldType::Boolean, kBooleanSize},
};

SourceFolderRow ReadRow(TTableReader& reader, const TCodePage& codePage) {
    SourceFolderRow row;
    row.Aktive = reader.ReadBoolean();
    row.Directory = reader.ReadText(codePage, kDirectoryLength);
    row.Rekursiv = reader.ReadBoolean();
    row.Extensions = reader.ReadText(codePage, kExtensionsLength);
    row.ExtensionMode = reader.ReadText(codePage, kExtensionModeLength);
    row.History = reader.ReadBoolean();
    row.Hidden = reader.ReadBoolean();
    return row;
}

// Rows take several times the room of their bytes, so a file is read through before any is kept: a damaged
// one costs nothing, however large it is.
std::size_t CountRows(TTableReader reader, const TCodePage& codePage) {
    std::size_t count = 0;
    for (; !reader.AtEnd(); ++count) {
        ReadRow(reader, codePage);
    }
    return count;
}

}  // namespace

std::vector<SourceFolderRow> ReadSourceFolderRows(std::string_view bytes, const TCodePage& codePage) {
    TTableReader reader(bytes, kFields);
    std::vector<SourceFolderRow> rows;
    rows.reserve(CountRows(reader, codePage));
    while (!reader.AtEnd()) {
        rows.push_back(ReadRow(reader, codePage));
    }
    return rows;
}

std::string WriteSourceFolderRows(const std::vector<SourceFolderRow>& rows, const TCodePage& codePage) {
    std::string bytes;
    TTableWriter writer(bytes);
    writer.WriteHeader(kFields);
    for (const SourceFolderRow& row : rows) {
        writer.WriteBoolean(row.Aktive);
        writer.WriteText(codePage, row.Directory);
        writer.WriteBoolean(row.Rekursiv);
        writer.WriteText(codePage, row.Extensions);
        writer.WriteText(codePage, row.ExtensionMode);
        writer.WriteBoolean(row.History);
        writer.WriteBoolean(row.Hidden);
    }
    return bytes;
}
