#include "store/settings.h"

#include <stdexcept>

#include "store/ini_file.h"
#include "store/table_file.h"
#include "support/case_folding.h"
#include "support/file_access.h"
#include "support/path_text.h"
#include "support/system_code_page.h"
#include "support/system_error.h"
#include "support/text.h"
#include "support/wipe.h"

TSettings::~TSettings() {
    WipeText(AUser);
    WipeText(APass);
}

TSettings LoadSettings(const TPlatformCalls& calls, std::wstring_view iniPath, const TUnprotect& unprotect) {
    std::string bytes;
    const TErrorCode error = ReadWholeFile(calls, iniPath, bytes);
    if (error != ERROR_SUCCESS && !IsMissing(error)) {
        throw std::runtime_error(FileNotReadMessage(iniPath, ToUtf8(SystemErrorText(error))));
    }
    const TIniFile ini(bytes, TSystemCodePage());
    const auto text = [&ini](std::wstring_view key) { return ini.Text(kSettingsSection, key).value_or(L""); };

    TSettings settings;
    settings.NAS = LocaleUpperCase(RemoveTrailingSeparator(text(L"NASDIR")));
    settings.UseConnect = ini.Boolean(kSettingsSection, L"CONNECT", false);
    if (settings.UseConnect) {
        const auto credential = [&](std::wstring_view key, const char* name) {
            try {
                return unprotect(text(key));
            } catch (const std::exception& failure) {
                throw std::runtime_error(name + (" in \"" + ToUtf8(iniPath)) +
                                         "\" kann nicht entschlüsselt werden: " + failure.what());
            }
        };
        settings.AUser = credential(L"USER", "Der Anmeldename");
        settings.APass = credential(L"PASS", "Das Passwort");
    }
    return settings;
}
