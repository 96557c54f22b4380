// Keeps how windows and grids were left in the registry of the current user.
#pragma once

#include <optional>
#include <string>

// The stored layout under a name; nothing when there is none or it cannot be read.
std::optional<std::wstring> LoadLayout(const wchar_t* name);

// Stores it; a layout that cannot be stored is none worth a word.
void StoreLayout(const wchar_t* name, const std::wstring& layout);
