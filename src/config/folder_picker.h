// Lets the user choose a folder.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

// Shows the system's folder picker, hidden folders included. It begins in the start folder, or at the list
// of drives when that is empty or does not exist. Nothing when the user cancels; the answer may name a
// folder that does not exist. Throws std::system_error when the picker cannot be shown.
std::optional<std::wstring> PickFolder(HWND owner, const std::wstring& title,
                                       const std::wstring& startFolder);
