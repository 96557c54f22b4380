// The names under which files lie in the backup tree while they are being copied.
#pragma once

#include <string>
#include <string_view>

// The one name that this process uses: it copies one file at a time. Some 40 characters, so
// that it fits beside a target whose own name has the greatest length.
const std::wstring& OwnTemporaryName();

// Whether a name in a backup folder is a temporary one: never a copy of anything.
bool IsTemporaryName(std::wstring_view name);

// Whether it is one that another, perhaps interrupted, run of the program made.
bool IsLeftOverTemporaryName(std::wstring_view name);
