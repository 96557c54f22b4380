// The access rights of files.
#pragma once

#include <string>

#include "support/platform_calls.h"

// Gives a file the access rights that another one in its folder was given beyond those of the folder. Nothing
// changes where the file system knows no rights or refuses.
void TakeOverAccessRights(const TPlatformCalls& calls, std::wstring from, std::wstring to);
