// Keeps the layout of grids, and where their windows stood, in the registry of the current user.
#pragma once

#include <optional>
#include <string>

// The stored layout of a view; nothing when there is none or it cannot be read.
std::optional<std::wstring> LoadGridLayout(const wchar_t* viewName);

// Stores it; a layout that cannot be stored is none worth a word.
void StoreGridLayout(const wchar_t* viewName, const std::wstring& layout);
