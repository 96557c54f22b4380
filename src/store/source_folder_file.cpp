#include "store/source_folder_file.h"

#include "store/source_folder_format.h"
#include "support/system_code_page.h"

bool LoadSourceFolders(const TPlatformCalls& calls, std::wstring_view path, TSourceFolderTable& table) {
    table.Close();
    const bool found = LoadFile(calls, path, [&table](std::string_view bytes) {
        table.Assign(ReadSourceFolderRows(bytes, TSystemCodePage()));
    });
    table.Open();
    return found;
}

TErrorCode SaveSourceFolders(const TPlatformCalls& calls, std::wstring_view path, TSourceFolderTable& table) {
    const std::string bytes = WriteSourceFolderRows(table.Rows(), TSystemCodePage());
    const TErrorCode error = ReplaceWholeFile(
        calls, path, [&bytes](const TByteSink& sink) { return sink(bytes); }, TRightsOfNewFile::AsBefore);
    if (error == ERROR_SUCCESS) {
        table.SetModified(false);
    }
    return error;
}
