// The system's error codes, and what a caller wants to know of them.
#pragma once

#include <cstdint>

// The error code of a call that failed, as the system documents it; 0 (ERROR_SUCCESS) when it did not.
using TErrorCode = std::uint32_t;

// Whether the code says that there is no such file or folder. The only answer that may be taken for "not
// there": every other one means that nobody knows.
bool IsMissing(TErrorCode error);

// Whether the code says that the drive or the server behind a path does not answer, so that asking for other
// paths there would only wait once more.
bool IsOutOfReach(TErrorCode error);
