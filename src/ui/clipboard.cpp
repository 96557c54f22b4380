#include "ui/clipboard.h"

#include <cstring>

bool CopyToClipboard(HWND owner, const std::wstring& text) {
    if (!OpenClipboard(owner)) {
        return false;
    }
    EmptyClipboard();
    bool copied = false;
    if (HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t))) {
        if (void* bytes = GlobalLock(memory)) {
            std::memcpy(bytes, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
            GlobalUnlock(memory);
            copied = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        }
        // The system owns what it took.
        if (!copied) {
            // cppcheck-suppress doubleFree ; takes GlobalUnlock for a release
            GlobalFree(memory);
        }
    }
    CloseClipboard();
    return copied;
}
