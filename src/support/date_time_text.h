// Date-times as the user reads them.
#pragma once

#include <string>

#include "support/date_time.h"

// The current local date-time.
TDateTime CurrentDateTime();

// The user's short date and long time with a blank between them, such as "24.12.2024 18:05:00".
std::wstring DateTimeText(TDateTime time);
