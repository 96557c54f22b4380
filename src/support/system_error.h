// Error codes of the system and their texts.
#pragma once

#include <string>

#include "support/error_code.h"

// The system's message text of an error code, in the user's language, without trailing characters up to
// code 32 and without trailing full stops. "Fehler <code>" when the system has no text for it.
std::wstring SystemErrorText(TErrorCode code);
