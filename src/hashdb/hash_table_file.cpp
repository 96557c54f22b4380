#include "hashdb/hash_table_file.h"

#include "hashdb/hash_table_format.h"
#include "store/table_file.h"
#include "support/system_error.h"

bool LoadHashTable(const TPlatformCalls& calls, std::wstring_view path, THashTable& table) {
    std::string bytes;
    const TErrorCode error = ReadWholeFile(calls, path, bytes);
    if (IsMissing(error)) {
        return false;
    }
    if (error != ERROR_SUCCESS) {
        throw std::runtime_error(FileNotReadMessage(path, ToUtf8(SystemErrorText(error))));
    }
    try {
        table.Assign(ReadHashRecords(bytes));
    } catch (const std::runtime_error& reason) {
        throw std::runtime_error(FileNotReadMessage(path, reason.what()));
    }
    return true;
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
