#include "hashdb/hash_table_file.h"

#include "hashdb/hash_table_format.h"

bool LoadHashTable(const TPlatformCalls& calls, std::wstring_view path, THashTable& table) {
    return LoadFile(calls, path, [&table](std::string_view bytes) { table.Assign(ReadHashRecords(bytes)); });
}

TErrorCode SaveHashTable(const TPlatformCalls& calls, std::wstring_view path, const THashSnapshot& records,
                         bool sorted) {
    return ReplaceWholeFile(calls, path, [&](const TByteSink& sink) {
        TErrorCode error = ERROR_SUCCESS;
        const bool written =
            WriteHashRecords(records.Store(), sorted, [&error, &sink](std::string_view piece) {
                error = sink(piece);
                return error == ERROR_SUCCESS;
            });
        return written ? ERROR_SUCCESS : error;
    });
}
