#include "store/settings.h"

#include <vector>

#include "store/credential_protection.h"
#include "store/ini_file.h"
#include "support/case_folding.h"
#include "support/file_access.h"
#include "support/path_text.h"
#include "support/system_code_page.h"
#include "support/text.h"

namespace {

constexpr std::wstring_view kSection = L"CONFIG";
constexpr std::int32_t kMostParallel = 32;

// Every setting with its key, in the order of the file: CONNECT before the credentials, which it asks for.
template <typename TSettingsOrConst, typename TVisit>
void ForEachSetting(TSettingsOrConst& settings, TVisit visit) {
    visit(L"NASDIR", settings.NASDIR);
    visit(L"CONNECT", settings.CONNECT);
    visit(L"USER", settings.USER);
    visit(L"PASS", settings.PASS);
}

// A missing file has no bytes.
TErrorCode ReadBytes(const TPlatformCalls& calls, const std::wstring& iniPath, std::string& bytes) {
    const TErrorCode error = ReadWholeFile(calls, iniPath, bytes);
    return IsMissing(error) ? ERROR_SUCCESS : error;
}

enum class TCredentials { ForLogon, Always };

// Gives each setting its value from the file.
struct TReader {
    const TIniFile& ini;
    const TSettings& settings;
    TCredentials credentials;
    const std::wstring& iniPath;
    std::vector<TProblem>& problems;

    void operator()(std::wstring_view key, TSetting<std::wstring>& setting) const {
        setting = {ini.Text(kSection, key).value_or(setting.value), true};
    }
    void operator()(std::wstring_view key, TSetting<bool>& setting) const {
        setting = {ini.Boolean(kSection, key, setting.value), true};
    }
    void operator()(std::wstring_view key, TSetting<TSecret>& setting) const {
        if (credentials == TCredentials::ForLogon && !settings.CONNECT.value) {
            return;
        }
        try {
            setting = {TSecret(Unprotect(ini.Text(kSection, key).value_or(L""))), true};
        } catch (const EProblem& reason) {
            const bool isUser = &setting == &settings.USER;
            problems.push_back(
                {.what = isUser ? TProblemKind::UserNotDecrypted : TProblemKind::PasswordNotDecrypted,
                 .path = iniPath,
                 .detail = reason.Problem().detail});
        }
    }
};

// Puts each known setting into the file.
struct TWriter {
    TIniFile& ini;

    template <typename Value>
    void operator()(std::wstring_view key, const TSetting<Value>& setting) const {
        if (setting.known) {
            Put(key, setting.value);
        }
    }
    void Put(std::wstring_view key, const std::wstring& value) const { ini.SetText(kSection, key, value); }
    void Put(std::wstring_view key, bool value) const { ini.SetBoolean(kSection, key, value); }
    void Put(std::wstring_view key, const TSecret& value) const { Put(key, Protect(value.text)); }
};

// The result is everything that went wrong.
std::vector<TProblem> Read(const TPlatformCalls& calls, const std::wstring& iniPath, TCredentials credentials,
                           TSettings& settings) {
    std::string bytes;
    if (const TErrorCode error = ReadBytes(calls, iniPath, bytes)) {
        return {{.what = TProblemKind::FileNotRead, .path = iniPath, .code = error}};
    }
    const TIniFile ini(bytes, TSystemCodePage());
    std::vector<TProblem> problems;
    ForEachSetting(settings, TReader{ini, settings, credentials, iniPath, problems});
    settings.CLOUD = ini.Boolean(kSection, L"CLOUD", settings.CLOUD);
    if (const auto parallel = ini.Number(kSection, L"PARALLEL"); parallel >= 1 && parallel <= kMostParallel) {
        settings.PARALLEL = static_cast<unsigned>(*parallel);
    }
    return problems;
}

}  // namespace

std::wstring TSettings::DestinationRoot() const {
    return LocaleUpperCase(RemoveTrailingSeparator(NASDIR.value));
}

TSettings LoadSettings(const TPlatformCalls& calls, const std::wstring& iniPath) {
    TSettings settings;
    const std::vector<TProblem> problems = Read(calls, iniPath, TCredentials::ForLogon, settings);
    if (!problems.empty()) {
        throw EProblem(problems.front());
    }
    return settings;
}

std::optional<TProblem> ReadSettings(const TPlatformCalls& calls, const std::wstring& iniPath,
                                     TSettings& settings) {
    std::vector<TProblem> problems = Read(calls, iniPath, TCredentials::Always, settings);
    if (problems.empty()) {
        return std::nullopt;
    }
    TProblem& problem = problems.front();
    problem.what = problem.what == TProblemKind::FileNotRead ? TProblemKind::SettingsNotRead
                   : problems.size() > 1                     ? TProblemKind::CredentialsUnknown
                   : settings.USER.known                     ? TProblemKind::PasswordUnknown
                                                             : TProblemKind::UserUnknown;
    return problem;
}

std::optional<TProblem> WriteSettings(const TPlatformCalls& calls, const std::wstring& iniPath,
                                      const TSettings& settings) {
    std::string before;
    if (const TErrorCode error = ReadBytes(calls, iniPath, before)) {
        return TProblem{.what = TProblemKind::SettingsNotRead, .path = iniPath, .code = error};
    }
    const TSystemCodePage codePage;
    TIniFile ini(before, codePage);
    try {
        ForEachSetting(settings, TWriter{ini});
    } catch (const std::exception& error) {
        return TProblem{.what = TProblemKind::NotEncrypted, .detail = FromUtf8Lossy(error.what())};
    }
    const std::string after = ini.Bytes(codePage);
    // Whoever only looked may lack the right to write.
    if (after != before) {
        const auto write = [&after](const TByteSink& sink) { return sink(after); };
        if (const TErrorCode error = ReplaceWholeFile(calls, iniPath, write, TRightsOfNewFile::AsBefore)) {
            return TProblem{.what = TProblemKind::SettingsNotSaved, .path = iniPath, .code = error};
        }
    }
    return std::nullopt;
}
