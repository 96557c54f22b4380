#include "engine/run_log_name.h"

#include <gtest/gtest.h>

namespace {

TEST(RunLogName, NamesSortByTimeAndOnlySuchNamesAreOurs) {
    const std::wstring name = RunLogName(ToDateTime({2026, 1, 3, 9, 5, 7, 999}));
    EXPECT_EQ(name, L"2026-01-03 09-05-07.txt");
    EXPECT_LT(name, RunLogName(ToDateTime({2026, 1, 3, 10, 0, 0})));
    EXPECT_TRUE(IsRunLogName(name));
    for (const wchar_t* other :
         {L"", L"2026-01-03 09-05-07", L"2026-01-03 09-05-07.txt.bak", L"2026-01-03 09-05-07.TXT",
          L"2026-01-03 09-05.txt", L"2026-13-03 09-05-07.txt", L"2026-01-03 24-05-07.txt",
          L"2026-01-03_09-05-07.txt", L"x026-01-03 09-05-07.txt", L"Notizen.txt"}) {
        EXPECT_FALSE(IsRunLogName(other)) << std::string(other, other + std::wcslen(other));
    }
}

TEST(RunLogName, TheOldestAreTooMany) {
    const std::vector<std::wstring> names = {L"2026-01-03 09-05-07.txt", L"Notizen.txt",
                                             L"2025-12-31 23-59-59.txt", L"2026-01-03 09-05-08.txt"};
    EXPECT_EQ(SuperfluousRunLogs(names, 2), (std::vector<std::wstring>{L"2025-12-31 23-59-59.txt"}));
    EXPECT_TRUE(SuperfluousRunLogs(names, 3).empty());
}

}  // namespace
