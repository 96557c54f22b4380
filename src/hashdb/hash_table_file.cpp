#include "hashdb/hash_table_file.h"

#include "hashdb/hash_table_format.h"

bool LoadHashTable(const TPlatformCalls& calls, std::wstring_view path, THashTable& table) {
    return LoadFile(calls, path, [&table](std::string_view bytes) { table.Assign(ReadHashRecords(bytes)); });
}

TErrorCode SaveHashTable(const TPlatformCalls& calls, std::wstring_view path, THashTable& table) {
    const auto write = [&table](const TByteSink& sink) {
        TErrorCode error = ERROR_SUCCESS;
        const bool written =
            WriteHashRecords(table.Store(), table.HasIndex(), [&error, &sink](std::string_view piece) {
                error = sink(piece);
                return error == ERROR_SUCCESS;
            });
        return written ? ERROR_SUCCESS : error;
    };
    const TErrorCode error = ReplaceWholeFile(calls, path, write);
    if (error == ERROR_SUCCESS) {
        table.SetModified(false);
    }
    return error;
}
