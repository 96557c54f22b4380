// Stands in for the system's schtasks.exe, of which Wine's keeps little of what a task says: writes its
// command line to schtasks.log beside itself, and a copy of the task's description to schtasks.xml. Fails
// where there is a file schtasks.fail.
#include <windows.h>

#include <string>

namespace {

std::wstring Beside(const wchar_t* extension) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring result(path);
    return result.substr(0, result.rfind(L'.')) + extension;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const HANDLE log =
        CreateFileW(Beside(L".log").c_str(), FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS, 0, nullptr);
    for (int index = 1; index < count; ++index) {
        const std::wstring argument(arguments[index]);
        const std::wstring line = argument + (index + 1 < count ? L"|" : L"\n");
        char bytes[1000] = "";
        const int length =
            WideCharToMultiByte(CP_UTF8, 0, line.c_str(), -1, bytes, sizeof(bytes), nullptr, nullptr);
        DWORD written = 0;
        WriteFile(log, bytes, static_cast<DWORD>(length - 1), &written, nullptr);
        if (index > 1 && std::wstring(arguments[index - 1]) == L"/XML") {
            CopyFileW(arguments[index], Beside(L".xml").c_str(), FALSE);
        }
    }
    CloseHandle(log);
    return GetFileAttributesW(Beside(L".fail").c_str()) == INVALID_FILE_ATTRIBUTES ? 0 : 1;
}
