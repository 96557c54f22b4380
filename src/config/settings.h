// The settings of a run, as "NASConf.ini" holds them.
#pragma once

#include <string>
#include <string_view>

#include "support/platform_calls.h"

struct TSettings {
    std::wstring NAS;         // destination root: one trailing "\" removed, upper case in the user's language
    bool UseConnect = false;  // log on to the share first
    std::wstring AUser;       // in plain text; read only when UseConnect is set
    std::wstring APass;
};

// Reads the settings. A missing file, section or key gives the default. Throws std::runtime_error (UTF-8
// text) when the file cannot be read, or when a user name or password is not in the protected form.
TSettings LoadSettings(const TPlatformCalls& calls, std::wstring_view iniPath);
