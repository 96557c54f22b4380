#include "config/source_folder_grid.h"

#include <gtest/gtest.h>

namespace {

constexpr auto kAktive = static_cast<std::size_t>(TSourceFolderColumn::Aktive);
constexpr auto kDirectory = static_cast<std::size_t>(TSourceFolderColumn::Directory);

SourceFolderRow RowOf(const wchar_t* directory) {
    SourceFolderRow row;
    row.Directory = directory;
    return row;
}

class SourceFolderGrid : public testing::Test {
protected:
    SourceFolderGrid() { table.Assign({RowOf(L"a"), RowOf(L"b"), RowOf(L"c")}); }

    TSourceFolderTable table;
    TSourceFolderGrid grid{table};
};

TEST_F(SourceFolderGrid, ARowBeingInsertedStandsAmongTheOthers) {
    table.MoveTo(1);
    table.Insert();
    table.Working().Directory = L"new";
    ASSERT_EQ(grid.RowCount(), 4u);
    EXPECT_EQ(grid.CurrentRow(), 1u);
    const wchar_t* expected[] = {L"a", L"new", L"b", L"c"};
    for (std::size_t row = 0; row < 4; ++row) {
        EXPECT_EQ(grid.Text(row, kDirectory), expected[row]);
    }
    EXPECT_EQ(grid.RowKey(1), 0u);
    EXPECT_EQ(grid.RowKey(2), table.RecId(1));
    grid.MoveTo(3);
    EXPECT_EQ(table.Current().Directory, L"c");
    EXPECT_EQ(table.Rows()[1].Directory, L"new");
}

TEST_F(SourceFolderGrid, AChangeIsPostedAtOnceAndOnlyARealOneCounts) {
    grid.SetText(kDirectory, L"a");
    EXPECT_FALSE(table.Modified());
    grid.SetChecked(kAktive, true);
    EXPECT_TRUE(table.Modified());
    EXPECT_EQ(table.Rows()[0].Aktive, true);
    EXPECT_EQ(table.State(), TSourceFolderTable::TState::Browse);
}

TEST_F(SourceFolderGrid, WhatTheTableRefusesIsToldAndDropped) {
    TProblem problem;
    grid.OnProblem = [&](const TProblem& told) { problem = told; };
    grid.SetText(kDirectory, std::wstring(256, L'x'));
    EXPECT_EQ(problem.what, TProblemKind::TextTooLong);
    EXPECT_EQ(grid.Text(0, kDirectory), L"a");
    EXPECT_FALSE(table.Modified());
}

TEST_F(SourceFolderGrid, ARowIsDeletedOnlyIfItIsStillTheOneAskedFor) {
    grid.OnDeleting = [&](const std::wstring&) {
        table.MoveTo(2);
        return true;
    };
    grid.AskDeleteRow();
    EXPECT_EQ(table.RecordCount(), 3u);
    grid.OnDeleting = [](const std::wstring& folder) { return folder == L"c"; };
    grid.AskDeleteRow();
    EXPECT_EQ(table.RecordCount(), 2u);
}

}  // namespace
