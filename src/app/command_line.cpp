#include "app/command_line.h"

#include <algorithm>

#include "support/text.h"

namespace {

// Of several, the one that checks most.
std::optional<TCheckOrder> CheckOrderIn(const std::vector<std::wstring>& arguments) {
    std::optional<TCheckOrder> check;
    for (const std::wstring& argument : arguments) {
        for (unsigned percent = 100; percent > (check ? check->percent : 0); --percent) {
            const std::wstring word = percent == 100 ? L"/VERIFY" : L"/VERIFY=" + std::to_wstring(percent);
            if (EqualsIgnoringAsciiCase(argument, word)) {
                check = {.percent = percent};
                break;
            }
        }
    }
    return check;
}

}  // namespace

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
    result.check = CheckOrderIn(arguments);
    if (result.check) {
        result.check->repair = isPresent(L"/REPAIR");
    }
    return result;
}
