// Upper case as the file system and as the user's language see it.
#pragma once

#include <string>
#include <string_view>

// The upper case of one UTF-16 unit under the rules that do not depend on the user's language: the ones by
// which file names count as equal.
wchar_t UpperCaseOf(wchar_t letter);

// The whole text under the same rules.
std::wstring FoldedCase(std::wstring_view text);

// The key under which names are compared that may be one to some file system: letters and their accents in
// one, and upper case.
std::wstring NameKey(std::wstring_view name);

// The text in upper case under the rules of the user's language.
std::wstring LocaleUpperCase(std::wstring_view text);
