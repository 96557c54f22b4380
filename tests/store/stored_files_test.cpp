// The files of the configuration folder on a real disk: "NASConf.Dat" and "NASConf.ini".
#include <gmock/gmock.h>

#include <stdexcept>

#include "store/settings.h"
#include "store/source_folder_file.h"
#include "store/source_folder_format.h"
#include "support/system_code_page.h"
#include "support/text.h"
#include "test_folder.h"

namespace {

using testing::HasSubstr;

class StoredFiles : public testing::Test {
protected:
    const TPlatformCalls& calls = SystemPlatformCalls();
    TTestFolder folder;
};

std::wstring Reversed(std::wstring_view text) {
    return {text.rbegin(), text.rend()};
}

TEST_F(StoredFiles, SourceFoldersSurviveARestart) {
    const std::wstring path = folder.At(L"NASConf.Dat");
    TSourceFolderTable table;
    LoadSourceFolders(calls, path, table);
    EXPECT_TRUE(table.IsOpen());
    EXPECT_TRUE(table.IsEmpty());
    for (const wchar_t* directory : {L"C:\\M\u00E4rz", L"D:\\\u4E2D\u6587", L"\\\\nas\\\U0001F4BE"}) {
        table.Append();
        table.Working().Directory = directory;
        table.Post();
    }
    ASSERT_EQ(SaveSourceFolders(calls, path, table), static_cast<TErrorCode>(ERROR_SUCCESS));
    EXPECT_FALSE(table.Modified());

    TSourceFolderTable reloaded;
    LoadSourceFolders(calls, path, reloaded);
    EXPECT_EQ(reloaded.Rows(), table.Rows());
    EXPECT_EQ(reloaded.RowNumber(), 0u);
    EXPECT_FALSE(reloaded.Eof());
}

TEST_F(StoredFiles, ADamagedTableIsNamedAndLeftAlone) {
    const std::wstring path = folder.Write(L"NASConf.Dat", "Ver and nothing more");
    TSourceFolderTable table;
    try {
        LoadSourceFolders(calls, path, table);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr(ToUtf8(path)));
        EXPECT_THAT(error.what(), HasSubstr("andere Version"));
    }
    EXPECT_FALSE(table.IsOpen());
    EXPECT_THROW(LoadSourceFolders(calls, folder.Path(), table), std::runtime_error) << "a folder";
}

TEST_F(StoredFiles, SettingsAreReadAsARunNeedsThem) {
    const std::wstring path = folder.Write(
        L"NASConf.ini", "[CONFIG]\r\nNASDIR=d:\\Backup\\Daten\\\r\nCONNECT=1\r\nUSER=resu\r\nPASS=\r\n");
    TSettings settings = LoadSettings(calls, path, Reversed);
    EXPECT_EQ(settings.NAS, L"D:\\BACKUP\\DATEN");
    EXPECT_TRUE(settings.UseConnect);
    EXPECT_EQ(settings.AUser, L"user");
    EXPECT_EQ(settings.APass, L"");

    const TUnprotect fail = [](std::wstring_view) -> std::wstring { throw std::runtime_error("unreadable"); };
    EXPECT_THROW((void)LoadSettings(calls, path, fail), std::runtime_error);

    folder.Write(L"NASConf.ini", "[config]\nnasdir=e:\\\\\nUSER=x\n");
    settings = LoadSettings(calls, path, fail);
    EXPECT_EQ(settings.NAS, L"E:\\");
    EXPECT_FALSE(settings.UseConnect);
    EXPECT_EQ(settings.AUser, L"");

    settings = LoadSettings(calls, folder.At(L"none\\NASConf.ini"), fail);
    EXPECT_EQ(settings.NAS, L"");
}

TEST(SystemCodePage, HoldsOnlyWhatComesBack) {
    const TSystemCodePage codePage;
    EXPECT_EQ(codePage.Encode(L"C:\\abc"), "C:\\abc");
    EXPECT_EQ(codePage.Encode(L""), "");
    // In a page of the west the first has no byte and the second would become a look-alike.
    for (const wchar_t* text : {L"\u4E2D", L"\u221E", L"\xD800"}) {
        if (const auto bytes = codePage.Encode(text)) {
            EXPECT_EQ(codePage.Decode(*bytes), text);
        }
    }
}

}  // namespace
