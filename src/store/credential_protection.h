// Keeps the user name and password in the settings file from being read at a glance. The key is the same in
// every installation, so that any of them can read the settings of another: this is no safe.
#pragma once

#include <string>
#include <string_view>

// The protected form of a text: Base64 of its AES-256-CBC encryption. Empty for the empty text. Throws
// ERwCryptException.
std::wstring Protect(std::wstring_view plain);

// The text of a protected form; empty for the empty text. Throws EProblem (ProtectedTextDamaged) when the
// text is no protected form, and when the system refuses.
std::wstring Unprotect(std::wstring_view protectedText);
