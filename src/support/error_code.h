// The system's error codes, and what a caller wants to know of them.
#pragma once

#include <cstdint>

// The error code of a call that failed, as the system documents it; 0 (ERROR_SUCCESS) when it did not.
using TErrorCode = std::uint32_t;

// The code of the call that has just failed; never ERROR_SUCCESS.
TErrorCode LastFailure();

// Whether the code says that there is no such file or folder. The only answer that may be taken for "not
// there": every other one means that nobody knows.
bool IsMissing(TErrorCode error);

// Whether the code says that the drive or the server behind a path does not answer, so that asking for other
// paths there would only wait once more. A drive letter that is gone may also answer "path not found", as a
// missing folder does: whoever must tell them apart asks for the drive's root as well.
bool IsOutOfReach(TErrorCode error);

// Whether a call was refused as by a virus scanner or an indexer, which hold a file for a moment when it was
// closed or renamed. A denial that stays has the same codes.
bool IsTransientRefusal(TErrorCode error);
