#include "app/command_line.h"

#include <algorithm>

#include "support/text.h"

TCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
    const auto isPresent = [&](const wchar_t* name) {
        return std::any_of(arguments.begin(), arguments.end(), [&](const std::wstring& argument) {
            return EqualsIgnoringAsciiCase(argument, name);
        });
    };
    TCommandLine result;
    result.copy = isPresent(L"/COPY");
    result.msgOff = result.copy && isPresent(L"/MSGOFF");
    result.shutDown = result.copy && isPresent(L"/SHUTDOWN");
    return result;
}
