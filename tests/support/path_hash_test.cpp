#include "support/path_hash.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class PathHashTest : public testing::Test {
protected:
    static void SetUpTestSuite() { CreateHashContext(); }
};

TEST_F(PathHashTest, GivesTheKnownHashes) {
    EXPECT_EQ(PathHash(L"C:\\Data\\a.txt"),
              L"23993CD8C4687CEBD7C11A3337F71447845B584FC57F12A144456CA5B906ABE3");
    EXPECT_EQ(PathHash(L""), L"E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855");
    EXPECT_EQ(PathHash(std::wstring_view()), PathHash(L""));
    EXPECT_EQ(ToPathHashText(PathDigest(L"C:\\Data\\a.txt")),
              "23993CD8C4687CEBD7C11A3337F71447845B584FC57F12A144456CA5B906ABE3");
}

TEST_F(PathHashTest, SpellingCounts) {
    EXPECT_NE(PathDigest(L"C:\\Data\\a.txt"), PathDigest(L"c:\\data\\a.txt"));
    EXPECT_NE(PathDigest(L"C:\\Data\\a.txt"), PathDigest(L"C:\\Data\\.\\a.txt"));
    EXPECT_NE(PathDigest(L"C:\\Data\\a.txt"), PathDigest(L"\\\\?\\C:\\Data\\a.txt"));
    EXPECT_EQ(PathHash(std::wstring(32000, wchar_t{0xD83D})).size(), kPathHashLength);
}

TEST_F(PathHashTest, OneContextServesSeveralThreads) {
    const auto pathOf = [](int index) { return L"C:\\Daten\\file " + std::to_wstring(index); };
    std::vector<TPathDigest> expected;
    for (int index = 0; index < 2000; ++index) {
        expected.push_back(PathDigest(pathOf(index)));
    }
    std::vector<TPathDigest> found[2];
    {
        std::vector<std::jthread> threads;
        for (auto& digests : found) {
            threads.emplace_back([&digests, &pathOf] {
                for (int index = 0; index < 2000; ++index) {
                    digests.push_back(PathDigest(pathOf(index)));
                }
            });
        }
    }
    EXPECT_EQ(found[0], expected);
    EXPECT_EQ(found[1], expected);
}

}  // namespace
