// "NASConf.Dat" on a real disk.
#include "store/source_folder_file.h"

#include <gtest/gtest.h>

#include "support/problem_in.h"
#include "test_folder.h"

namespace {

class SourceFolderFile : public testing::Test {
protected:
    const TPlatformCalls& calls = SystemPlatformCalls();
    TTestFolder folder;
};

TEST_F(SourceFolderFile, SourceFoldersSurviveARestart) {
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

TEST_F(SourceFolderFile, ADamagedTableIsNamedAndLeftAlone) {
    const std::wstring path = folder.Write(L"NASConf.Dat", "Ver and nothing more");
    TSourceFolderTable table;
    EXPECT_EQ(ProblemIn([&] { LoadSourceFolders(calls, path, table); }),
              (TProblem{.what = TProblemKind::OtherTableVersion, .path = path}));
    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(
        ProblemIn([&] { LoadSourceFolders(calls, folder.Path(), table); }),
        (TProblem{.what = TProblemKind::FileNotRead, .path = folder.Path(), .code = ERROR_ACCESS_DENIED}));
}

}  // namespace
