// The program's entry.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>

#include "app/main_window.h"
#include "config/config_window.h"
#include "engine/error_log.h"
#include "support/com_use.h"
#include "support/system_code_page.h"
#include "support/system_error.h"
#include "support/text.h"
#include "texts/main_texts.h"
#include "texts/problem_text.h"
#include "ui/system_theme.h"
#include "update/update_check.h"

namespace {

constexpr int kCouldNotStart = 2;

std::vector<std::wstring> ProgramArguments() {
    int count = 0;
    const std::unique_ptr<LPWSTR[], decltype(&LocalFree)> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    return count > 1 ? std::vector<std::wstring>(arguments.get() + 1, arguments.get() + count)
                     : std::vector<std::wstring>();
}

void WriteToStandardError(const std::wstring& text) {
    const std::string bytes = ToUtf8(text + L"\r\n");
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
              nullptr);
}

// Under "/COPY" and "/VERIFY" nobody may be there to close a message box.
void ReportFailedStart(const std::wstring& text, bool unattended, const std::wstring& configurationFolder) {
    if (!unattended) {
        MessageBoxW(nullptr, text.c_str(), MainTexts::Program, MB_ICONERROR | MB_OK);
        return;
    }
    WriteToStandardError(text);
    if (const TErrorCode error =
            WriteErrorLog(SystemPlatformCalls(), configurationFolder + L"\\Error.log", text)) {
        WriteToStandardError(L"Error.log: " + std::to_wstring(error));
    }
}

// What the system and the run-time library would put into a box of theirs is answered with an error code
// instead: a card reader without its card among the source folders, say. Of a crash, too, nobody is asked
// what to do when nobody is there.
void LeaveOutSystemErrorBoxes(bool unattended) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX | (unattended ? SEM_NOGPFAULTERRORBOX : 0U));
    if (unattended) {
        _set_error_mode(_OUT_TO_STDERR);
    }
}

// The configuration window and the update window.
class TProgramWindows final : public TCompanionWindows {
public:
    TProgramWindows(TfmMain& fmMain, TDM& dataModule)
        : fmConfig(SystemPlatformCalls(), dataModule.MemData, dataModule.ConfigurationFolder()),
          fmUpdateCheck(
              SystemPlatformCalls(), codePage_, TfmUpdateCheck::ProgramOptions(),
              [&fmMain] { return fmMain.Handle(); },
              [&fmMain] { PostMessageW(fmMain.Handle(), WM_CLOSE, 0, 0); }) {
        fmConfig.OnClosed = [&dataModule] { dataModule.SaveSourceFolderTable(); };
    }

    void ShowConfiguration(HWND owner) override { fmConfig.Show(owner); }
    bool CloseConfiguration() override { return fmConfig.Close(); }
    bool CloseConfigurationForRun() override { return fmConfig.CloseForRun(); }
    void CheckForUpdate(bool silent, std::function<void()> finished) override {
        fmUpdateCheck.ShowEx(silent, std::move(finished));
    }
    bool NewUpdateExists() const override { return fmUpdateCheck.NewUpdateExist(); }
    void CloseAllNow() override {
        fmConfig.Destroy();
        fmUpdateCheck.CloseNow();
    }

private:
    TSystemCodePage codePage_;
    TfmConfig fmConfig;
    TfmUpdateCheck fmUpdateCheck;
};

int RunProgram(const TCommandLine& commandLine, int nShowCmd) {
    TfmMain fmMain(SystemPlatformCalls(), commandLine);
    std::unique_ptr<TDM> dataModule;
    std::optional<TProgramWindows> windows;
    try {
        fmMain.FormCreate();
        dataModule = std::make_unique<TDM>(SystemPlatformCalls());
        dataModule->DataModuleCreate();
        windows.emplace(fmMain, *dataModule);
        fmMain.Show(*dataModule, *windows, nShowCmd);
    } catch (const std::exception& error) {
        ReportFailedStart(ProblemText(ProblemOf(error), &SystemErrorText), commandLine.IsUnattended(),
                          dataModule ? dataModule->ConfigurationFolder() : std::wstring());
        fmMain.Destroy();
        return kCouldNotStart;
    }
    SetUnexpectedErrorHandler([&fmMain](const std::wstring& text) { fmMain.ReportUnexpectedError(text); });
    RunMessageLoop([] { return false; }, [&fmMain] { fmMain.ApplicationIdle(); });
    fmMain.EndDataModule();
    windows.reset();
    SetUnexpectedErrorHandler({});
    return fmMain.ExitCode();
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int nShowCmd) {
    const TCommandLine commandLine = ParseCommandLine(ProgramArguments());
    LeaveOutSystemErrorBoxes(commandLine.IsUnattended());
    // A call to a NAS may take longer than the system's patience. The window it would put in place of ours,
    // closed by a click, would end the program in the middle of a file.
    DisableProcessWindowsGhosting();
    const TComUse com;
    const INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    UseSystemTheme();
    return RunProgram(commandLine, nShowCmd);
}
