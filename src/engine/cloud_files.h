// Files that are listed here and lie in a cloud.
#pragma once

#include <windows.h>

// Whether reading a file with these attributes fetches it.
inline bool MustBeFetched(DWORD attributes) {
    // The system's headers of this compiler do not know them all.
    constexpr DWORD kRecallOnOpen = 0x0004'0000;
    constexpr DWORD kRecallOnDataAccess = 0x0040'0000;
    return (attributes & (FILE_ATTRIBUTE_OFFLINE | kRecallOnOpen | kRecallOnDataAccess)) != 0;
}
