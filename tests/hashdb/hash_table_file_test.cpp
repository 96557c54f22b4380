#include "hashdb/hash_table_file.h"

#include <gtest/gtest.h>

#include "support/problem_in.h"
#include "test_folder.h"

namespace {

TEST(HashTableFile, RecordsSurviveARestartAndADamagedFileChangesNothing) {
    const TPlatformCalls& calls = SystemPlatformCalls();
    const TTestFolder folder;
    const std::wstring path = folder.At(L"Vardeko.dat");
    const TPathDigest hash{{1, 2, 3}};

    THashTable table;
    table.RecordCopiedFile(hash, {1000});
    EXPECT_FALSE(LoadHashTable(calls, path, table)) << "no file";
    EXPECT_EQ(table.RecordCount(), 1u);
    table.AddIndex();
    ASSERT_EQ(SaveHashTable(calls, path, *table.Snapshot(), true), TErrorCode{ERROR_SUCCESS});

    THashTable reloaded;
    EXPECT_TRUE(LoadHashTable(calls, path, reloaded));
    EXPECT_TRUE(reloaded.IsOpen());
    EXPECT_EQ(reloaded.Find(hash), TDateTime{1000});

    ASSERT_EQ(AppendToFile(calls, path, "rest"), static_cast<TErrorCode>(ERROR_SUCCESS));
    EXPECT_EQ(ProblemIn([&] { LoadHashTable(calls, path, reloaded); }),
              (TProblem{.what = TProblemKind::TableDamaged, .path = path, .number = 120, .limit = 124}));
    EXPECT_EQ(reloaded.RecordCount(), 1u);
    EXPECT_NE(SaveHashTable(calls, folder.At(L"none\\Vardeko.dat"), *table.Snapshot(), true),
              TErrorCode{ERROR_SUCCESS});
}

}  // namespace
