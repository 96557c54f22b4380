#include "support/file_times.h"

#include "support/file_access.h"
#include "support/path_text.h"

std::optional<TFileTimes> ReadFileTimes(const TPlatformCalls& calls, std::wstring_view path) {
    const TAttributes attributes = QueryAttributes(calls, path);
    return attributes.Exists() ? std::optional(attributes.Times()) : std::nullopt;
}

bool WriteFileTimes(const TPlatformCalls& calls, std::wstring_view path, const TFileTimes& times) {
    const auto open = [&](DWORD access) {
        return calls.CreateFileW(ExtendedPath(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    HANDLE file = open(GENERIC_READ | GENERIC_WRITE);
    if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED) {
        // A read-only file, as the copy of one is.
        file = open(FILE_WRITE_ATTRIBUTES);
    }
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool written = calls.SetFileTime(file, &times.creation, &times.lastAccess, &times.lastWrite) != 0;
    calls.CloseHandle(file);
    return written;
}

TLocalTimeRule::TLocalTimeRule() {
    GetTimeZoneInformation(&zone_);
}

TDateTime TLocalTimeRule::ToLocal(const FILETIME& time) const {
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    if (!FileTimeToSystemTime(&time, &universal) ||
        !SystemTimeToTzSpecificLocalTime(&zone_, &universal, &local)) {
        return {};
    }
    return ToDateTime({local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond,
                       local.wMilliseconds});
}

TDateTime LastWriteDateTime(const TPlatformCalls& calls, const TLocalTimeRule& rule, std::wstring_view path) {
    const TAttributes attributes = QueryAttributes(calls, path);
    return attributes.Exists() ? rule.ToLocal(attributes.data.ftLastWriteTime) : TDateTime{};
}
