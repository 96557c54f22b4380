// The settings as the configuration window reads and writes them.
#pragma once

#include <optional>
#include <string>

#include "support/platform_calls.h"
#include "support/text.h"

// The values of "NASConf.ini" in plain text, and which of them are known. One that could not be read or
// decrypted is not known, and is left in the file as it is until the user enters another. User name and
// password are wiped from memory with the object.
struct TConfigSettings {
    std::wstring NASDIR;
    bool CONNECT = false;
    std::wstring USER;
    std::wstring PASS;
    bool knowsNASDIR = true;
    bool knowsCONNECT = true;
    bool knowsUSER = true;
    bool knowsPASS = true;

    TConfigSettings() = default;
    TConfigSettings(const TConfigSettings&) = delete;
    TConfigSettings& operator=(const TConfigSettings&) = delete;
    ~TConfigSettings();
};

// Reads the file; a missing one gives the defaults. The result is what the user must be told (German),
// nothing if all is well.
[[nodiscard]] std::optional<std::wstring> ReadConfigSettings(const TPlatformCalls& calls,
                                                             const TCodePage& codePage,
                                                             const std::wstring& iniPath,
                                                             TConfigSettings& settings);

// Writes the known values into the file, which keeps everything else. The result is why that failed
// (German); the file is then as it was.
[[nodiscard]] std::optional<std::wstring> WriteConfigSettings(const TPlatformCalls& calls,
                                                              const TCodePage& codePage,
                                                              const std::wstring& iniPath,
                                                              const TConfigSettings& settings);
