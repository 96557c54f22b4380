#include "store/ini_file.h"

#include <gmock/gmock.h>

#include "support/latin1_code_page.h"

namespace {

using namespace std::string_literals;

const TLatin1CodePage codePage;

TIniFile Ini(std::string_view bytes) {
    return TIniFile(bytes, codePage);
}

TEST(IniFile, FindsKeysWithoutRegardToCaseAndBlanks) {
    const TIniFile ini =
        Ini("NASDIR=outside\r\n"
            "[Other]\nNASDIR=other\n"
            " [ Config ] ; ours\r\n"
            ";NASDIR=comment\r\n"
            "# NASDIR=comment\r\n"
            "no key\r\n"
            "  nasdir \t=  D:\\M\xE4rz=1 \r\n"
            "NASDIR=second\r\n"
            "[CONFIG]\r\nNASDIR=third\r\nUSER=u");
    EXPECT_EQ(ini.Text(L"CONFIG", L"NASDIR"), L"D:\\M\u00E4rz=1");
    EXPECT_EQ(ini.Text(L"config", L"user"), L"u");
    EXPECT_EQ(ini.Text(L"CONFIG", L"PASS"), std::nullopt);
    EXPECT_EQ(ini.Text(L"MISSING", L"NASDIR"), std::nullopt);
}

TEST(IniFile, ReadsTruthFromNumbers) {
    const auto boolean = [](const std::string& value, bool defaultValue) {
        return Ini("[CONFIG]\r\nCONNECT=" + value).Boolean(L"CONFIG", L"CONNECT", defaultValue);
    };
    for (const char* text : {"1", "-1", " 42 ", "\"1\""}) {
        EXPECT_TRUE(boolean(text, false)) << text;
    }
    for (const char* text : {"0", "-0", "00"}) {
        EXPECT_FALSE(boolean(text, true)) << text;
    }
    for (const char* text : {"", "true", "1x", "+1", "99999999999", "1 1"}) {
        EXPECT_TRUE(boolean(text, true)) << text;
        EXPECT_FALSE(boolean(text, false)) << text;
    }
}

TEST(IniFile, AddsWhatIsMissing) {
    TIniFile ini;
    ini.SetText(L"CONFIG", L"NASDIR", L"D:\\Backup\\");
    ini.SetBoolean(L"CONFIG", L"CONNECT", true);
    ini.SetText(L"CONFIG", L"USER", L"");
    EXPECT_EQ(ini.Bytes(codePage), "[CONFIG]\r\nNASDIR=D:\\Backup\\\r\nCONNECT=1\r\nUSER=\r\n");

    ini = Ini("; mine\n[config]\nCONNECT=0\n\n[Other]\nx=1");
    ini.SetText(L"CONFIG", L"NASDIR", L"D:");
    ini.SetText(L"New", L"y", L"2");
    EXPECT_EQ(ini.Bytes(codePage), "; mine\n[config]\nCONNECT=0\nNASDIR=D:\n\n[Other]\nx=1\n[New]\ny=2\n");
}

TEST(IniFile, ChangesOnlyTheValueItIsTold) {
    const std::string before =
        "\r\n; a comment\r\n[Other]\nx = \"1\" \r[CONFIG]\r\n NasDir =old \r\nNASDIR=second\r\nrubbish";
    EXPECT_EQ(Ini(before).Bytes(codePage), before);
    TIniFile ini = Ini(before);
    ini.SetText(L"config", L"NASDIR", L"new");
    EXPECT_EQ(ini.Bytes(codePage),
              "\r\n; a comment\r\n[Other]\nx = \"1\" \r[CONFIG]\r\n NasDir =new\r\nNASDIR=second\r\nrubbish");
}

TEST(IniFile, EveryValueOfOneLineComesBack) {
    TIniFile ini;
    for (const wchar_t* value :
         {L"", L" blanks ", L"\"quoted\"", L"\"", L"\"half", L"a;b#c=[d]", L"[x]", L"\t"}) {
        ini.SetText(L"CONFIG", L"NASDIR", value);
        EXPECT_EQ(Ini(ini.Bytes(codePage)).Text(L"CONFIG", L"NASDIR"), value);
    }
    ini.SetText(L"CONFIG", L"NASDIR", L"a\r\n[b]\nc=d");
    EXPECT_EQ(ini.Text(L"CONFIG", L"NASDIR"), L"a  [b] c=d");
}

TEST(IniFile, KeepsTheEncodingItWasReadIn) {
    const auto rewritten = [](const std::string& bytes) {
        TIniFile ini = Ini(bytes);
        EXPECT_EQ(ini.Text(L"C", L"k"), L"\u00E4\u4E2D");
        ini.SetText(L"C", L"k", L"\u00E4\U0001F4BE");
        return ini.Bytes(codePage);
    };
    EXPECT_EQ(rewritten("\xEF\xBB\xBF[C]\nk=\xC3\xA4\xE4\xB8\xAD"),
              "\xEF\xBB\xBF[C]\nk=\xC3\xA4\xF0\x9F\x92\xBE");
    EXPECT_EQ(rewritten("\xFF\xFE[\0C\0]\0\n\0k\0=\0\xE4\0\x2D\x4E"s),
              "\xFF\xFE[\0C\0]\0\n\0k\0=\0\xE4\0\x3D\xD8\xBE\xDC"s);
    EXPECT_EQ(rewritten("\xFE\xFF\0[\0C\0]\0\n\0k\0=\0\xE4\x4E\x2D"s),
              "\xFE\xFF\0[\0C\0]\0\n\0k\0=\0\xE4\xD8\x3D\xDC\xBE"s);
    EXPECT_EQ(Ini("\xFF\xFE[\0C\0]\0\n\0k\0=\0\x3D\xD8\xBE\xDC!"s).Text(L"C", L"k"), L"\U0001F4BE");
}

TEST(IniFile, KeepsBytesThatAreNoText) {
    const std::string before = "\xEF\xBB\xBF; caf\xE9\r\n[CONFIG]\nUSER=\xFF\rHISTORY=0\n";
    TIniFile ini(before, codePage);
    ini.SetText(L"CONFIG", L"USER", *ini.Text(L"CONFIG", L"USER"));
    ini.SetBoolean(L"CONFIG", L"HISTORY", true);
    EXPECT_EQ(ini.Bytes(codePage), "\xEF\xBB\xBF; caf\xE9\r\n[CONFIG]\nUSER=\xFF\rHISTORY=1\n");
}

TEST(IniFile, LeavesTheCodePageOnlyForTextItCannotHold) {
    TIniFile ini = Ini("[C]\nk=\xE4");
    EXPECT_EQ(ini.Bytes(codePage), "[C]\nk=\xE4");
    ini.SetText(L"C", L"k", L"\u4E2D");
    EXPECT_EQ(ini.Bytes(codePage), "\xFF\xFE[\0C\0]\0\n\0k\0=\0\x2D\x4E"s);
}

}  // namespace
