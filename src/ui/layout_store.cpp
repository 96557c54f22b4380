#include "ui/layout_store.h"

#include <windows.h>

#include "support/handles.h"

namespace {

constexpr wchar_t kStoreKey[] = L"Software\\Quentar\\Vardeko\\GUI\\GridStore";

}  // namespace

std::optional<std::wstring> LoadLayout(const wchar_t* name) {
    // A longer one is not ours.
    std::wstring text(4096, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_CURRENT_USER, kStoreKey, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    text.resize(text.find(L'\0'));
    return text;
}

void StoreLayout(const wchar_t* name, const std::wstring& layout) {
    TRegistryKey key;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kStoreKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.Receive(),
                        nullptr) == ERROR_SUCCESS) {
        RegSetValueExW(key.Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(layout.c_str()),
                       static_cast<DWORD>((layout.size() + 1) * sizeof(wchar_t)));
    }
}
