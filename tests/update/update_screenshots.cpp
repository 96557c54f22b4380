// Shows the update window in the states that docs/images/ holds; make_screenshots.sh takes the pictures.
#include <cstdio>
#include <memory>

#include "server_fixture.h"
#include "support/system_code_page.h"
#include "update/update_check.h"

namespace {

constexpr std::chrono::seconds kShown{2};  // long enough to take a picture

class TUpdateScreenshots : public TServerTest {
protected:
    // Says what can be seen now and where, in device pixels, and keeps it on the screen for a while.
    static void Present(const char* name, HWND window) {
        WaitFor([] { return false; }, std::chrono::milliseconds(300));
        RECT area{};
        GetWindowRect(window, &area);
        std::printf("shot %s %ldx%ld+%ld+%ld\n", name, area.right - area.left, area.bottom - area.top,
                    area.left, area.top);
        std::fflush(stdout);
        WaitFor([] { return false; }, kShown);
    }

    // Searches on the server with the given information file, as the user does.
    void SearchIn(const std::string& lines) {
        TfmUpdateCheck::TOptions options;
        options.server = ServerOf("\xEF\xBB\xBF[Vardeko 7.0]\r\n" + lines);
        options.dataFolder = Folder();
        check_ = std::make_unique<TfmUpdateCheck>(
            calls_, codePage_, options, [] { return nullptr; }, [] {});
        check_->ShowEx(true);
        WaitFor([] { return false; }, std::chrono::milliseconds(500));
        check_->ShowEx(false);
    }

    const TPlatformCalls& calls_ = SystemPlatformCalls();
    TSystemCodePage codePage_;
    std::unique_ptr<TfmUpdateCheck> check_;
};

TEST_F(TUpdateScreenshots, DISABLED_Present) {
    SearchIn("Build=7800\r\n");
    Present("update-none", check_->Handle());
    const std::string newer =
        "Build=7900\r\nVersion=7.9\r\nUpdateMsg=Schnellere Läufe auf langsamen Leitungen\r\n"
        "FileName=VardekoSetup.exe\r\nUrl=https://localhost:{trusted}/setup";
    SearchIn(newer + "_slow\r\n");
    Present("update-found", check_->Handle());
    check_->acDownload.Execute();
    WaitFor([] { return false; }, std::chrono::milliseconds(700));
    Present("update-downloading", check_->Handle());
    check_.reset();
    SearchIn(newer + "\r\n");
    check_->acDownload.Execute();
    WaitFor([] { return FindWindowW(nullptr, L"Bestätigung") != nullptr; });
    Present("update-question", FindWindowW(nullptr, L"Bestätigung"));
}

}  // namespace
