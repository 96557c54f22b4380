#include "support/user_locale.h"

#include <windows.h>

#include <iterator>

namespace {

std::wstring UserText(LCTYPE kind, const wchar_t* otherwise) {
    wchar_t text[8] = {};
    const int length =
        GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, kind, text, static_cast<int>(std::size(text)));
    return length > 0 ? text : otherwise;
}

}  // namespace

std::wstring DecimalSeparator() {
    return UserText(LOCALE_SDECIMAL, L",");
}

std::wstring ThousandSeparator() {
    return UserText(LOCALE_STHOUSAND, L"");
}
