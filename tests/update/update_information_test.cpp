#include "update/update_information.h"

#include <gmock/gmock.h>

#include "support/latin1_code_page.h"

namespace {

TUpdateInformation Read(std::string_view bytes) {
    return ReadUpdateInformation(bytes, TLatin1CodePage());
}

TEST(UpdateInformation, TakesEveryKeyOfItsSection) {
    const TUpdateInformation information = Read(
        "[Other]\r\nBuild=1\r\n"
        "[Vardeko 7.0]\r\nBuild=7900\r\nVersion=7.9\r\nUpdateMsg=Sch\xF6n neu\r\n"
        "Url=https://a.example/s.exe\r\nUpPage=https://a.example/page\r\nExMsg=extra\r\nExInt=3\r\n"
        "NewsUrl=http://a.example/news\r\nNewsVer=12\r\nFileName=Setup.exe\r\nSWInfo=1\r\n");
    EXPECT_EQ(information.build, 7900);
    EXPECT_EQ(information.version, L"7.9");
    EXPECT_EQ(information.updateMessage, L"Sch\xF6n neu");
    EXPECT_EQ(information.downLoadUrl, L"https://a.example/s.exe");
    EXPECT_EQ(information.homepageUrl, L"https://a.example/page");
    EXPECT_EQ(information.exMsgString, L"extra");
    EXPECT_EQ(information.exDelay, 3);
    EXPECT_EQ(information.newsUrl, L"http://a.example/news");
    EXPECT_EQ(information.newsVersion, 12);
    EXPECT_EQ(information.setupFileName, L"Setup.exe");
    EXPECT_TRUE(information.isSoftwareInfo);
    EXPECT_EQ(Read("\xEF\xBB\xBF[Vardeko 7.0]\nUpdateMsg=\xC3\xB6\n").updateMessage, L"\xF6");
}

TEST(UpdateInformation, WhatIsNoNumberIsNoNewerBuild) {
    for (const char* value :
         {"", "x", "7900x", "0x7fff", "99999999999999999999", "7900.5", "+7900", "79 00"}) {
        EXPECT_EQ(Read("[Vardeko 7.0]\nBuild=" + std::string(value) + "\n").build, 0) << value;
    }
    EXPECT_EQ(Read("[Vardeko 7.0]\nBuild=-7900\n").build, -7900);
    EXPECT_EQ(Read("").build, 0);
    EXPECT_EQ(Read("<html>Build=9999</html>").build, 0);
    EXPECT_EQ(Read("[Vardeko 8.0]\nBuild=9999\n").build, 0);
}

TEST(UpdateInformation, BoundsAndTamesTexts) {
    const std::string many(60'000, 'x');
    const TUpdateInformation information = Read("[Vardeko 7.0]\nVersion=a\x1B[2J\tb\x07\nUpdateMsg=" + many +
                                                "\nUrl=https://" + many + "\nFileName=" + many + ".exe\n");
    EXPECT_EQ(information.version, L"a [2J b ");
    EXPECT_EQ(information.updateMessage.size(), kLargestShownText);
    EXPECT_EQ(information.updateMessage.back(), L'\x2026');
    EXPECT_EQ(information.downLoadUrl, L"");
    EXPECT_EQ(information.setupFileName, L"");
    EXPECT_EQ(HarmlessText(L"Setup\x202E"
                           L"exe.doc\x2028\x85",
                           100),
              L"Setup exe.doc  ");
    EXPECT_EQ(HarmlessText(L"abc", 3), L"abc");
    EXPECT_EQ(HarmlessText(L"abcd", 3), L"ab\x2026");
}

TEST(SafeSetupFileName, TakesOnlyBareNamesOfPrograms) {
    for (const wchar_t* name :
         {L"VardekoSetup.exe", L"Vardeko Setup 7.9 (64-bit)+1.EXE", L"CONSOLE.exe", L"COM10.exe", L"7.exe"}) {
        EXPECT_TRUE(IsSafeSetupFileName(name)) << testing::PrintToString(std::wstring(name));
    }
    const std::wstring nul(L"a\0.exe", 6);
    for (const std::wstring& name : std::initializer_list<std::wstring>{L"",
                                                                        L".exe",
                                                                        L"..exe",
                                                                        L"Setup",
                                                                        L"Setup.exe.bat",
                                                                        L"Setup.com",
                                                                        L"Setup.exe ",
                                                                        L"Setup.exe.",
                                                                        L" Setup.exe",
                                                                        L"..\\Setup.exe",
                                                                        L"../Setup.exe",
                                                                        L"C:Setup.exe",
                                                                        L"C:\\Setup.exe",
                                                                        L"\\\\server\\share\\Setup.exe",
                                                                        L"Setup.txt:x.exe",
                                                                        L"Setup.exe::$DATA",
                                                                        L"CON.exe",
                                                                        L"nul.exe",
                                                                        L"Aux.tar.exe",
                                                                        L"com1.exe",
                                                                        L"LPT9.exe",
                                                                        L"COM\xB9.exe",
                                                                        L"PRN .exe",
                                                                        L"CONIN$.exe",
                                                                        L"%TEMP%.exe",
                                                                        L"a\"b.exe",
                                                                        L"a|b.exe",
                                                                        L"a*.exe",
                                                                        L"a\n.exe",
                                                                        nul,
                                                                        L"Setup\x202E"
                                                                        L"cod.exe",
                                                                        L"-x.exe",
                                                                        std::wstring(200, L'a') + L".exe"}) {
        EXPECT_FALSE(IsSafeSetupFileName(name)) << testing::PrintToString(name);
    }
}

TEST(SafeAddress, OnlyWebPagesAreOpenedAndOnlySecureSetupsFetched) {
    for (const wchar_t* address :
         {L"https://vardeko.example/", L"HTTPS://a.example:8443/x?y=z&u=%20#f", L"https://[::1]/"}) {
        EXPECT_TRUE(MayOpenPage(address));
        EXPECT_TRUE(MayFetchSetup(address));
    }
    EXPECT_TRUE(MayOpenPage(L"http://vardeko.example/news"));
    EXPECT_FALSE(MayFetchSetup(L"http://vardeko.example/setup.exe"));
    const std::wstring nul(L"https://a\0b", 11);
    for (const std::wstring& address :
         std::initializer_list<std::wstring>{L"",
                                             L"https://",
                                             L"https:///etc",
                                             L"https:\\\\a.example",
                                             L" https://a.example",
                                             L"file:///C:/x.exe",
                                             L"javascript:alert(1)",
                                             L"ms-settings:",
                                             L"C:\\Windows\\System32\\calc.exe",
                                             L"\\\\server\\share\\x.exe",
                                             L"https://a.example/ --flag",
                                             L"https://a.example/\" --flag",
                                             L"https://a.example/\r\nX: y",
                                             L"https://a.example/\\..\\x",
                                             L"https://a.example/<x>",
                                             L"https://a.example/\x202E",
                                             nul,
                                             L"https://-a.example/",
                                             L"httpsx://a.example",
                                             L"https://" + std::wstring(3000, L'a')}) {
        EXPECT_FALSE(MayOpenPage(address)) << testing::PrintToString(address);
        EXPECT_FALSE(MayFetchSetup(address)) << testing::PrintToString(address);
    }
}

}  // namespace
