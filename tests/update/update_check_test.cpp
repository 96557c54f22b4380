#include "update/update_check.h"

#include <filesystem>
#include <fstream>
#include <memory>

#include "server_fixture.h"
#include "support/system_code_page.h"

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::vector<std::wstring> openedPages;
std::vector<std::wstring> startedPrograms;  // "application|command line"
DWORD startError = ERROR_SUCCESS;

TPlatformCalls CatchingCalls() {
    TPlatformCalls calls = SystemPlatformCalls();
    calls.ShellExecuteW = [](HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR, LPCWSTR, INT show) -> HINSTANCE {
        EXPECT_STREQ(verb, L"open");
        EXPECT_EQ(show, SW_SHOWNORMAL);
        openedPages.emplace_back(file);
        return reinterpret_cast<HINSTANCE>(INT_PTR{42});
    };
    calls.CreateProcessW = [](LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES,
                              LPSECURITY_ATTRIBUTES, BOOL inherit, DWORD flags, LPVOID, LPCWSTR,
                              LPSTARTUPINFOW, LPPROCESS_INFORMATION) -> BOOL {
        EXPECT_FALSE(inherit);
        EXPECT_EQ(flags, static_cast<DWORD>(CREATE_NEW_CONSOLE | NORMAL_PRIORITY_CLASS));
        startedPrograms.push_back(std::wstring(application) + L"|" + commandLine);
        SetLastError(startError);
        return startError == ERROR_SUCCESS;
    };
    return calls;
}

// A main window to be modal over.
class TOwner : public TWindow {
public:
    TOwner() {
        TCreateOptions options;
        options.className = L"VardekoUpdateTestOwner";
        options.style = WS_OVERLAPPEDWINDOW | WS_VISIBLE;
        options.left = options.top = 100;
        options.width = 700;
        options.height = 500;
        EXPECT_TRUE(Create(options));
    }

protected:
    std::optional<LRESULT> HandleMessage(UINT, WPARAM, LPARAM) override { return std::nullopt; }
};

class TUpdateCheckTest : public TServerTest {
protected:
    void SetUp() override {
        TServerTest::SetUp();
        openedPages.clear();
        startedPrograms.clear();
        startError = ERROR_SUCCESS;
    }

    void Make(const std::wstring& server) {
        TfmUpdateCheck::TOptions options;
        options.server = server;
        options.dataFolder = Folder();
        options.patience = {milliseconds(1500), milliseconds(3000)};
        options.downLoadPatience = {milliseconds(3000), milliseconds(8000)};
        check_ = std::make_unique<TfmUpdateCheck>(
            calls_, codePage_, options, [this] { return owner_.Handle(); }, [this] { ++endings_; });
    }

    // Runs the silent check against a server whose information file has these lines.
    void Search(const std::string& lines) {
        Make(ServerOf("[Vardeko 7.0]\r\n" + lines));
        SearchSilently();
    }

    void SearchSilently() {
        bool isFinished = false;
        check_->ShowEx(true, [&] { isFinished = true; });
        EXPECT_FALSE(isFinished);
        EXPECT_TRUE(WaitFor([&] { return isFinished; }));
        EXPECT_EQ(check_->Handle(), nullptr);
        EXPECT_THAT(FilesInFolder(), Not(HasSubstr("VardekoUpdate.ini")));
    }

    void Show() {
        check_->ShowEx(false, [this] { ++closings_; });
        ASSERT_NE(check_->Handle(), nullptr);
        EXPECT_FALSE(IsWindowEnabled(owner_.Handle()));
    }

    static HWND FindControl(HWND window, const std::wstring& classOrText) {
        struct TSearch {
            std::wstring wanted;
            HWND found = nullptr;
        } search{classOrText};
        EnumChildWindows(
            window,
            [](HWND child, LPARAM parameter) -> BOOL {
                auto* state = reinterpret_cast<TSearch*>(parameter);
                wchar_t className[32]{};
                GetClassNameW(child, className, 32);
                if (lstrcmpiW(className, state->wanted.c_str()) == 0 || TextOf(child) == state->wanted) {
                    state->found = child;
                    return FALSE;
                }
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

    static std::wstring TextOf(HWND window) {
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
        text.resize(
            static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
        return text;
    }

    std::wstring Log() const { return TextOf(FindControl(check_->Handle(), L"EDIT")); }
    std::wstring Label() const { return TextOf(FindControl(check_->Handle(), L"STATIC")); }
    static void Press(HWND window, const wchar_t* button) {
        SendMessageW(FindControl(window, button), BM_CLICK, 0, 0);
    }
    void Press(const wchar_t* button) const { Press(check_->Handle(), button); }
    bool IsEnabled(const wchar_t* button) const {
        return IsWindowEnabled(FindControl(check_->Handle(), button));
    }

    // The message box over the update window; null when there is none.
    static HWND Box() {
        HWND box = nullptr;
        for (const wchar_t* title : {L"Bestätigung", L"Message", L"Error"}) {
            box = box != nullptr ? box : FindWindowW(nullptr, title);
        }
        return box;
    }
    static std::wstring WaitForBox() {
        EXPECT_TRUE(WaitFor([] { return Box() != nullptr; }));
        return Box() != nullptr ? TextOf(Box()) : L"";
    }

    TPlatformCalls calls_ = CatchingCalls();
    TSystemCodePage codePage_;
    TOwner owner_;
    int closings_ = 0;
    int endings_ = 0;
    std::unique_ptr<TfmUpdateCheck> check_;
};

constexpr const char* kNewer =
    "Build=7801\r\nVersion=7.9\r\nUpdateMsg=Alles neu\r\n"
    "Url=https://localhost:{trusted}/setup\r\nFileName=Vardeko Setup.exe\r\n";

TEST_F(TUpdateCheckTest, TellsOfANewerVersion) {
    Search(kNewer);
    EXPECT_TRUE(check_->NewUpdateExist());
    Show();
    EXPECT_EQ(Log(),
              L"Neuere Version: 7.9\r\nAlles neu\r\n\r\n"
              L"Klicken Sie auf Update, um eine neuere Version von Vardeko zu erhalten\r\n");
    EXPECT_EQ(Label(), L"");
    EXPECT_TRUE(IsEnabled(L"Update"));
    EXPECT_TRUE(IsEnabled(L"Nach Updates Suchen"));
    EXPECT_THAT(openedPages, IsEmpty());
}

TEST_F(TUpdateCheckTest, TellsThatThereIsNone) {
    for (const char* build : {"Build=7800\r\n", "Build=7799\r\n", "", "Build=-1\r\n"}) {
        Search(build);
        EXPECT_FALSE(check_->NewUpdateExist());
        Show();
        EXPECT_EQ(Log(), L"Im Moment ist kein Update verfügbar\r\n");
        EXPECT_FALSE(IsEnabled(L"Update"));
    }
    EXPECT_THAT(openedPages, IsEmpty());
}

TEST_F(TUpdateCheckTest, SearchesInTheWindow) {
    Make(ServerOf(std::string("[Vardeko 7.0]\r\n") + kNewer));
    Show();
    EXPECT_EQ(Log(), L"");
    EXPECT_FALSE(IsEnabled(L"Update"));
    Press(L"Nach Updates Suchen");
    EXPECT_EQ(Label(), L"Prüfe auf Updates..");
    EXPECT_FALSE(IsEnabled(L"Nach Updates Suchen"));
    EXPECT_TRUE(WaitFor([this] { return IsEnabled(L"Update"); }));
    EXPECT_EQ(Label(), L"");
    EXPECT_THAT(Log(), HasSubstr(L"Neuere Version: 7.9"));
}

TEST_F(TUpdateCheckTest, LogsWhatWentWrong) {
    Make(Trusted() + L"/no_such_folder");
    SearchSilently();
    EXPECT_FALSE(check_->NewUpdateExist());
    Show();
    EXPECT_EQ(Log(), L"404 Not Found\r\n");
    // A portal that answers every address with its own page.
    Make(Trusted() + L"/html");
    SearchSilently();
    EXPECT_FALSE(check_->NewUpdateExist());
    for (const auto& [server, code] : {std::pair{L"localhost:1", L"12029"}, {L"server.invalid", L"12007"}}) {
        Make(server);
        SearchSilently();
        Show();
        EXPECT_THAT(Log(), testing::StartsWith(code + std::wstring(L" Der Server ist nicht zu erreichen.")));
    }
}

TEST_F(TUpdateCheckTest, OpensTheNewsPageOnlyWhenItIsAPage) {
    Search("Build=7800\r\nNewsUrl=https://vardeko.example/news\r\n");
    EXPECT_THAT(openedPages, ElementsAre(L"https://vardeko.example/news"));
    openedPages.clear();
    Search("Build=7800\r\nNewsUrl=https://vardeko.example/news\r\nExInt=1\r\n");
    Search("Build=7900\r\nNewsUrl=https://vardeko.example/news\r\n");
    for (const char* address : {"file:///C:/Windows/System32/calc.exe", "C:\\Windows\\System32\\calc.exe",
                                "\\\\server\\share\\x.exe", "javascript:alert(1)",
                                "ms-settings:", "https://a.example/\" --flag", "calc"}) {
        Search("Build=7800\r\nNewsUrl=" + std::string(address) + "\r\n");
    }
    EXPECT_THAT(openedPages, IsEmpty());
}

TEST_F(TUpdateCheckTest, OpensTheUpdatePageInsteadOfADownload) {
    Search(std::string(kNewer) + "UpPage=http://vardeko.example/update\r\n");
    Show();
    Press(L"Update");
    EXPECT_THAT(openedPages, ElementsAre(L"http://vardeko.example/update"));
    Search(std::string(kNewer) + "UpPage=file:///C:/x.exe\r\n");
    Show();
    Press(L"Update");
    EXPECT_EQ(openedPages.size(), 1u);
    EXPECT_EQ(Box(), nullptr);
    EXPECT_THAT(Seen(), Not(HasSubstr("/setup")));
}

TEST_F(TUpdateCheckTest, HostileSetupsAreNotFetched) {
    const char* hostile[] = {
        "Url=http://localhost:{plain}/setup\r\nFileName=Setup.exe\r\n",
        "Url=file:///C:/Windows/System32/calc.exe\r\nFileName=Setup.exe\r\n",
        "Url=https://localhost:{trusted}/setup\r\nFileName=..\\Setup.exe\r\n",
        "Url=https://localhost:{trusted}/setup\r\nFileName=C:\\Setup.exe\r\n",
        "Url=https://localhost:{trusted}/setup\r\nFileName=Setup.bat\r\n",
        "Url=https://localhost:{trusted}/setup\r\nFileName=x.txt:Setup.exe\r\n",
        "Url=https://localhost:{trusted}/setup\r\nFileName=NUL.exe\r\n",
        "Url=https://localhost:{trusted}/setup\r\n",
        "FileName=Setup.exe\r\n",
    };
    for (const char* lines : hostile) {
        Search(std::string("Build=7900\r\n") + lines);
        Show();
        Press(L"Update");
        EXPECT_EQ(WaitForBox(), L"Error") << lines;
        Press(Box(), L"OK");
        EXPECT_TRUE(IsEnabled(L"Update"));
    }
    const std::string seen = Seen();
    EXPECT_THAT(seen, Not(HasSubstr("/setup")));
    EXPECT_THAT(seen, Not(HasSubstr("plain")));
    EXPECT_THAT(startedPrograms, IsEmpty());
}

TEST_F(TUpdateCheckTest, FetchesAndStartsTheSetupAndEndsTheProgram) {
    Search(kNewer);
    Show();
    Press(L"Update");
    EXPECT_FALSE(IsEnabled(L"Update"));
    EXPECT_EQ(WaitForBox(), L"Bestätigung");
    EXPECT_THAT(Label(), HasSubstr(L" Kb, speed "));
    EXPECT_THAT(Label(), HasSubstr(L"292"));
    EXPECT_EQ(FilesInFolder(), "Vardeko Setup.exe");
    EXPECT_FALSE(IsWindowEnabled(check_->Handle()));
    EXPECT_THAT(startedPrograms, IsEmpty());
    Press(Box(), L"Ja");
    const std::wstring file = Folder() + L"\\Vardeko Setup.exe";
    EXPECT_THAT(startedPrograms, ElementsAre(file + L"|\"" + file + L"\" "));
    EXPECT_EQ(endings_, 1);
    EXPECT_EQ(closings_, 1);
    EXPECT_TRUE(IsWindowEnabled(owner_.Handle()));
}

TEST_F(TUpdateCheckTest, DoesNotEndTheProgramWithoutASetup) {
    Search(kNewer);
    Show();
    Press(L"Update");
    WaitForBox();
    Press(Box(), L"Nein");
    EXPECT_EQ(check_->Handle(), nullptr);
    EXPECT_THAT(startedPrograms, IsEmpty());
    EXPECT_EQ(closings_, 1);

    startError = ERROR_ACCESS_DENIED;
    Show();
    Press(L"Update");
    WaitForBox();
    Press(Box(), L"Ja");
    EXPECT_EQ(startedPrograms.size(), 1u);
    EXPECT_EQ(check_->Handle(), nullptr);
    EXPECT_EQ(closings_, 2);
    EXPECT_EQ(endings_, 0);

    // ERROR_ELEVATION_REQUIRED: the shell asks for an administrator.
    startError = 740;
    Show();
    Press(L"Update");
    WaitForBox();
    Press(Box(), L"Ja");
    EXPECT_THAT(openedPages, ElementsAre(Folder() + L"\\Vardeko Setup.exe"));
    EXPECT_EQ(endings_, 1);
}

TEST_F(TUpdateCheckTest, TellsHowADownloadEnded) {
    const auto downLoad = [this](const std::string& path) {
        Search("Build=7900\r\nFileName=Setup.exe\r\nUrl=https://localhost:{trusted}" + path + "\r\n");
        Show();
        Press(L"Update");
        return WaitForBox();
    };
    EXPECT_EQ(downLoad("/setup_cut"), L"Error");
    Press(Box(), L"OK");
    EXPECT_EQ(FilesInFolder(), "");
    EXPECT_EQ(downLoad("/setup_second_part_cut"), L"Message");
    Press(Box(), L"OK");
    EXPECT_EQ(WaitForBox(), L"Bestätigung");
    Press(Box(), L"Nein");
    EXPECT_THAT(startedPrograms, IsEmpty());
}

TEST_F(TUpdateCheckTest, CancelStopsTheDownloadAndFadesOut) {
    Search("Build=7900\r\nFileName=Setup.exe\r\nUrl=https://localhost:{trusted}/setup_slow\r\n");
    Show();
    Press(L"Update");
    ASSERT_TRUE(WaitFor([this] { return !Label().empty(); }));
    Press(L"Abbrechen");
    EXPECT_EQ(WaitForBox(), L"Message");
    EXPECT_EQ(FilesInFolder(), "");
    Press(Box(), L"OK");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE(check_->Handle(), nullptr);
    ASSERT_TRUE(WaitFor([this] { return check_->Handle() == nullptr; }));
    const auto faded = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(faded, milliseconds(255 * 8 - 50));
    EXPECT_LT(faded, milliseconds(3 * 255 * 8));
    EXPECT_EQ(closings_, 1);
    EXPECT_TRUE(IsWindowEnabled(owner_.Handle()));
}

TEST_F(TUpdateCheckTest, CanBeUsedWithTheKeyboard) {
    Make(Trusted() + L"/silent");
    Show();
    const auto key = [](WPARAM code) {
        // As a loop of the system delivers it, which does not know this window's keys.
        SendMessageW(GetFocus(), WM_KEYDOWN, code, 0);
        WaitFor([] { return false; }, milliseconds(30));
    };
    EXPECT_EQ(TextOf(GetFocus()), L"Nach Updates Suchen");
    key(VK_TAB);
    EXPECT_EQ(TextOf(GetFocus()), L"Abbrechen");
    key(VK_TAB);
    key(VK_TAB);
    EXPECT_EQ(TextOf(GetFocus()), L"Nach Updates Suchen");
    key(VK_RETURN);
    EXPECT_EQ(Label(), L"Prüfe auf Updates..");
    EXPECT_EQ(TextOf(GetFocus()), L"Abbrechen");
    key(VK_ESCAPE);
    EXPECT_TRUE(WaitFor([this] { return check_->Handle() == nullptr; }));
}

TEST_F(TUpdateCheckTest, GrowsWithTheScaleOfItsMonitor) {
    Make(Trusted());
    Show();
    const RECT area{0, 0, 1000, 640};
    SendMessageW(check_->Handle(), WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&area));
    RECT after{};
    GetWindowRect(FindControl(check_->Handle(), L"Update"), &after);
    EXPECT_EQ(after.right - after.left, 220);
    EXPECT_EQ(after.bottom - after.top, 60);
    EXPECT_EQ(after.right, 1000 - 48 - 220 - 16);
}

TEST_F(TUpdateCheckTest, NeverHoldsUpItsThread) {
    // A server that says nothing: the thread's other work goes on, and the end comes at once.
    Make(Trusted() + L"/silent");
    bool isFinished = false;
    auto begin = std::chrono::steady_clock::now();
    check_->ShowEx(true, [&] { isFinished = true; });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(200));
    WaitFor([] { return false; }, milliseconds(200));
    begin = std::chrono::steady_clock::now();
    check_->CloseNow();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(500));
    WaitFor([] { return false; }, milliseconds(50));
    EXPECT_FALSE(isFinished);

    // The program ends while a question is open in the middle of a copy.
    Search(kNewer);
    Show();
    Press(L"Update");
    EXPECT_EQ(WaitForBox(), L"Bestätigung");
    owner_.Destroy();
    EXPECT_EQ(check_->Handle(), nullptr);
    EXPECT_EQ(Box(), nullptr);
    begin = std::chrono::steady_clock::now();
    check_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(500));
    EXPECT_EQ(closings_, 0);
    EXPECT_EQ(endings_, 0);
}

}  // namespace
