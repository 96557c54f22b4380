#include "engine/error_log.h"

#include "support/date_time_text.h"
#include "support/text.h"

TErrorCode WriteErrorLog(const TPlatformCalls& calls, std::wstring_view logPath, std::wstring_view message) {
    std::wstring line = L"[" + DateTimeText(CurrentDateTime()) + L"] ";
    line += message;
    line += L"\r\n";
    return AppendToFile(calls, logPath, ToUtf8(line));
}
