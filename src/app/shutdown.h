// Switching the computer off.
#pragma once

#include <string>

#include "support/platform_calls.h"

// Asks the system to shut down a machine (empty: this one) after `timeout` seconds; `force` closes programs
// without asking, `reboot` starts the machine again. False when the system refuses, for whatever reason.
bool ShutdownSystem(const TPlatformCalls& calls, const std::wstring& machine, const std::wstring& message,
                    unsigned timeout, bool force, bool reboot);
