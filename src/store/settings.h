// The settings: the one structure of what "NASConf.ini" holds, and the one reader and writer of its keys.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "support/platform_calls.h"
#include "support/problem.h"
#include "support/wipe.h"

// A text that is wiped from memory with its object, and never copied with it.
struct TSecret {
    std::wstring text;

    TSecret() = default;
    // Wipes what it is made from, too.
    explicit TSecret(std::wstring&& plain) noexcept : text(std::move(plain)) { WipeText(plain); }
    TSecret(TSecret&& other) noexcept : TSecret(std::move(other.text)) {}
    TSecret& operator=(TSecret&& other) noexcept {
        WipeText(text);
        text = std::move(other.text);
        WipeText(other.text);
        return *this;
    }
    ~TSecret() { WipeText(text); }
};

// A value, and whether it is known. One that was not read or does not decrypt is not, and writing leaves it
// in the file as it is.
template <typename Value>
struct TSetting {
    Value value{};
    bool known = false;
};

// A new setting is a member here and a line of ForEachSetting.
struct TSettings {
    TSetting<std::wstring> NASDIR;  // destination root, as the user entered it
    TSetting<bool> CONNECT;         // log on to its share first
    TSetting<TSecret> USER;         // protected in the file
    TSetting<TSecret> PASS;

    // Without a control, so never written: files that are only in the cloud are fetched and copied, too.
    bool CLOUD = false;
    // The same: how many small files are copied at the same time, 1 to 32.
    unsigned PARALLEL = 8;

    // The destination root as a run needs it: one trailing "\" removed, upper case in the user's language.
    std::wstring DestinationRoot() const;
};

// What a run needs: the credentials only to log on, that is when CONNECT is set. A missing file, section or
// key gives the default. Throws EProblem (FileNotRead, UserNotDecrypted, PasswordNotDecrypted).
TSettings LoadSettings(const TPlatformCalls& calls, const std::wstring& iniPath);

// Reads whatever can be read, as it is stored, for the user to edit. The result is what the user must be told
// (SettingsNotRead, UserUnknown, PasswordUnknown, CredentialsUnknown).
[[nodiscard]] std::optional<TProblem> ReadSettings(const TPlatformCalls& calls, const std::wstring& iniPath,
                                                   TSettings& settings);

// Writes the known values into the file, which keeps everything else. The result is why that failed
// (SettingsNotRead, SettingsNotSaved, NotEncrypted); the file is then as it was.
[[nodiscard]] std::optional<TProblem> WriteSettings(const TPlatformCalls& calls, const std::wstring& iniPath,
                                                    const TSettings& settings);
