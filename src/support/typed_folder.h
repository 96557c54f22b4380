// Folders as people type and paste them.
#pragma once

#include <string>
#include <string_view>

// A folder in the one form that everything else works with: absolute, with "\" between its names and none at
// the end, "D:" for a drive's root. Blanks and quotes around it, "/", doubled separators, "." and "..", and
// the prefix of the extended form are taken as what they mean; all names keep their spelling. Empty when the
// text names no absolute path. Nothing is asked of the system.
std::wstring FolderAsMeant(std::wstring_view typed);
