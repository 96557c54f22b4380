// The settings of a run, as "NASConf.ini" holds them.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "support/platform_calls.h"

inline constexpr std::wstring_view kSettingsSection = L"CONFIG";

// Forgets the credentials when it goes.
struct TSettings {
    ~TSettings();

    std::wstring NAS;         // destination root: one trailing "\" removed, upper case in the user's language
    bool UseConnect = false;  // log on to the share first
    std::wstring AUser;       // in plain text; read only when UseConnect is set
    std::wstring APass;
};

// Gives the plain text of a stored one. Throws std::runtime_error (UTF-8 text) when it is not in the
// protected form.
using TUnprotect = std::function<std::wstring(std::wstring_view)>;

// Reads the settings. A missing file, section or key gives the default. Throws std::runtime_error (UTF-8,
// German, names the file) when the file cannot be read, or a credential is not in the protected form.
TSettings LoadSettings(const TPlatformCalls& calls, std::wstring_view iniPath, const TUnprotect& unprotect);
