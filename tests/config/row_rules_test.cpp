#include "config/row_rules.h"

#include <gtest/gtest.h>

namespace {

SourceFolderRow RowOf(bool active, const wchar_t* folder, const wchar_t* extensions, const wchar_t* mode,
                      bool history) {
    return {active, folder, true, extensions, mode, history, false};
}

TEST(RowRules, TheLastActiveRowThatIsThereAndTheCurrentOneRule) {
    const std::vector<SourceFolderRow> rows{
        RowOf(true, L"a", L".jpg", L"IN", false), RowOf(true, L"b", L".txt", L"in", false),
        RowOf(true, L"gone", L".txt", L"EX", false), RowOf(false, L"c", L"", L"NO", true)};
    const auto isMissing = [](const SourceFolderRow& row) { return row.Directory == L"gone"; };
    EXPECT_EQ(RulesOf(rows, 0, isMissing), (TRowRules{1, std::nullopt, {2}}));
    EXPECT_EQ(RulesOf(rows, 3, isMissing).history, 3u) << "an inactive row rules as well";
    EXPECT_EQ(RulesOf(rows, 0, [](const SourceFolderRow&) { return true; }).filter, std::nullopt);
}

TEST(RowRules, WhatCountsForNothingDoesNotDiffer) {
    const std::vector<SourceFolderRow> rows{RowOf(true, L"a", L".jpg", L"NO", true),
                                            RowOf(true, L"b", L"", L"", true),
                                            RowOf(false, L"c", L".txt", L"IN", false)};
    EXPECT_EQ(RulesOf(rows, 0, [](const SourceFolderRow&) { return false; }), TRowRules{});
    EXPECT_EQ(RulesOf({}, std::nullopt, {}), TRowRules{});
}

}  // namespace
