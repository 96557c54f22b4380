#include "support/file_times.h"

#include "support/file_access.h"
#include "support/open_file.h"

std::optional<TFileTimes> ReadFileTimes(const TPlatformCalls& calls, std::wstring_view path) {
    const TAttributes attributes = QueryAttributes(calls, path);
    return attributes.Exists() ? std::optional(attributes.Times()) : std::nullopt;
}

bool WriteFileTimes(const TPlatformCalls& calls, std::wstring_view path, const TFileTimes& times) {
    const TOpenFile file(calls, path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                         OPEN_EXISTING);
    return file.OpenError() == ERROR_SUCCESS &&
           calls.SetFileTime(file.Get(), &times.creation, &times.lastAccess, &times.lastWrite);
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
