#include "store/config_settings.h"

#include <stdexcept>

#include "store/credential_protection.h"
#include "store/ini_file.h"
#include "store/settings.h"
#include "support/file_access.h"
#include "support/system_error.h"
#include "support/wipe.h"

namespace {

// Reads the bytes of the file; a missing file has none.
TErrorCode ReadIni(const TPlatformCalls& calls, const std::wstring& iniPath, std::string& bytes) {
    const TErrorCode error = ReadWholeFile(calls, iniPath, bytes);
    if (IsMissing(error)) {
        bytes.clear();
        return ERROR_SUCCESS;
    }
    return error;
}

std::wstring FileProblem(const std::wstring& iniPath, const wchar_t* what, TErrorCode error) {
    return L"Die Einstellungen in „" + iniPath + L"“ konnten nicht " + what + L" werden: " +
           SystemErrorText(error) + L".";
}

// False when the stored text is not in the protected form, or the system refuses.
bool ReadProtected(const TIniFile& ini, const wchar_t* key, std::wstring& plain) {
    try {
        std::wstring text = Unprotect(ini.Text(kSettingsSection, key).value_or(L""));
        plain = text;
        WipeText(text);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::optional<std::wstring> UnknownCredentials(const TConfigSettings& settings) {
    if (settings.knowsUSER && settings.knowsPASS) {
        return std::nullopt;
    }
    const wchar_t* what = settings.knowsPASS   ? L"Der gespeicherte Anmeldename kann"
                          : settings.knowsUSER ? L"Das gespeicherte Passwort kann"
                                               : L"Anmeldename und Passwort können";
    return std::wstring(what) +
           L" nicht entschlüsselt werden. Was gespeichert ist, bleibt erhalten, bis hier etwas Neues "
           L"eingegeben wird.";
}

}  // namespace

TConfigSettings::~TConfigSettings() {
    WipeText(USER);
    WipeText(PASS);
}

std::optional<std::wstring> ReadConfigSettings(const TPlatformCalls& calls, const TCodePage& codePage,
                                               const std::wstring& iniPath, TConfigSettings& settings) {
    std::string bytes;
    if (const TErrorCode error = ReadIni(calls, iniPath, bytes)) {
        settings.knowsNASDIR = settings.knowsCONNECT = settings.knowsUSER = settings.knowsPASS = false;
        return FileProblem(iniPath, L"gelesen", error);
    }
    const TIniFile ini(bytes, codePage);
    settings.NASDIR = ini.Text(kSettingsSection, L"NASDIR").value_or(L"");
    settings.CONNECT = ini.Boolean(kSettingsSection, L"CONNECT", false);
    settings.knowsUSER = ReadProtected(ini, L"USER", settings.USER);
    settings.knowsPASS = ReadProtected(ini, L"PASS", settings.PASS);
    return UnknownCredentials(settings);
}

std::optional<std::wstring> WriteConfigSettings(const TPlatformCalls& calls, const TCodePage& codePage,
                                                const std::wstring& iniPath,
                                                const TConfigSettings& settings) {
    std::string before;
    if (const TErrorCode error = ReadIni(calls, iniPath, before)) {
        return FileProblem(iniPath, L"gelesen", error);
    }
    TIniFile ini(before, codePage);
    if (settings.knowsNASDIR) {
        ini.SetText(kSettingsSection, L"NASDIR", settings.NASDIR);
    }
    if (settings.knowsCONNECT) {
        ini.SetBoolean(kSettingsSection, L"CONNECT", settings.CONNECT);
    }
    try {
        if (settings.knowsUSER) {
            ini.SetText(kSettingsSection, L"USER", Protect(settings.USER));
        }
        if (settings.knowsPASS) {
            ini.SetText(kSettingsSection, L"PASS", Protect(settings.PASS));
        }
    } catch (const std::exception& error) {
        return L"Anmeldename und Passwort konnten nicht verschlüsselt werden: " + FromUtf8Lossy(error.what());
    }
    const std::string after = ini.Bytes(codePage);
    if (after == before) {
        // Whoever only looked may lack the right to write.
        return std::nullopt;
    }
    const TErrorCode error =
        ReplaceWholeFile(calls, iniPath, [&after](const TByteSink& sink) { return sink(after); });
    return error != ERROR_SUCCESS ? std::optional(FileProblem(iniPath, L"gespeichert", error)) : std::nullopt;
}
