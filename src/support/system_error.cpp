#include "support/system_error.h"

#include <windows.h>

#include <memory>

std::wstring SystemErrorText(TErrorCode code) {
    wchar_t* buffer = nullptr;
    // With FORMAT_MESSAGE_ALLOCATE_BUFFER the "buffer" argument is the address of the pointer to fill.
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    const std::unique_ptr<wchar_t, decltype(&LocalFree)> owner(buffer, &LocalFree);
    std::wstring text = length == 0 ? std::wstring() : std::wstring(buffer, length);
    while (!text.empty() && (text.back() <= 32 || text.back() == L'.')) {
        text.pop_back();
    }
    return text.empty() ? L"Fehler " + std::to_wstring(code) : text;
}
