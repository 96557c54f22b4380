// The hash of a file's path, by which the hash table knows the file.
#pragma once

#include <string>
#include <string_view>

#include "support/path_digest.h"

// Acquires the context that every hash of the process is computed with, and keeps it to the end; further
// calls do nothing. Called on the window's thread, before the first hash is needed. Throws
// ERwCryptException.
void CreateHashContext();

// The SHA-256 of the UTF-16LE bytes of a path exactly as it stands: the spelling counts. May be called on
// several threads at once. Throws ERwCryptException.
TPathDigest PathDigest(std::wstring_view path);

// The same as 64 upper-case hexadecimal characters.
std::wstring PathHash(std::wstring_view path);
