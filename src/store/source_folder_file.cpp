#include "store/source_folder_file.h"

#include "store/source_folder_format.h"
#include "store/table_file.h"
#include "support/system_code_page.h"
#include "support/system_error.h"

bool LoadSourceFolders(const TPlatformCalls& calls, std::wstring_view path, TSourceFolderTable& table) {
    table.Close();
    std::string bytes;
    const TErrorCode error = ReadWholeFile(calls, path, bytes);
    if (IsMissing(error)) {
        table.Open();
        return false;
    }
    if (error != ERROR_SUCCESS) {
        throw std::runtime_error(FileNotReadMessage(path, ToUtf8(SystemErrorText(error))));
    }
    try {
        table.Assign(ReadSourceFolderRows(bytes, TSystemCodePage()));
    } catch (const ETableFile& reason) {
        throw std::runtime_error(FileNotReadMessage(path, reason.what()));
    }
    return true;
}

TErrorCode SaveSourceFolders(const TPlatformCalls& calls, std::wstring_view path, TSourceFolderTable& table) {
    const std::string bytes = WriteSourceFolderRows(table.Rows(), TSystemCodePage());
    const TErrorCode error =
        ReplaceWholeFile(calls, path, [&bytes](const TByteSink& sink) { return sink(bytes); });
    if (error == ERROR_SUCCESS) {
        table.SetModified(false);
    }
    return error;
}
