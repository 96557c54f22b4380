// The clipboard.
#pragma once

#include <windows.h>

#include <string>

// Replaces what the clipboard holds by a text; false when another program keeps it locked.
bool CopyToClipboard(HWND owner, const std::wstring& text);
