#include "store/source_folder_table.h"

#include <gmock/gmock.h>

#include "support/problem_in.h"

namespace {

using testing::ElementsAre;
using TState = TSourceFolderTable::TState;

SourceFolderRow Folder(const wchar_t* directory) {
    SourceFolderRow row;
    row.Directory = directory;
    return row;
}

class SourceFolderTable : public testing::Test {
protected:
    SourceFolderTable() { table.Assign({Folder(L"A"), Folder(L"B"), Folder(L"C")}); }

    std::vector<std::wstring> Folders() const {
        std::vector<std::wstring> folders;
        for (const SourceFolderRow& row : table.Rows()) {
            folders.push_back(row.Directory.value_or(L"-"));
        }
        return folders;
    }

    TSourceFolderTable table;
};

TEST_F(SourceFolderTable, TheCursorWalksFromTheFirstRowToBehindTheLast) {
    table.MoveTo(2);
    table.First();
    std::vector<std::wstring> seen;
    for (; !table.Eof(); table.Next()) {
        seen.push_back(*table.Current().Directory);
    }
    EXPECT_THAT(seen, ElementsAre(L"A", L"B", L"C"));
    EXPECT_EQ(table.Current(), Folder(L"C"));

    table.Close();
    EXPECT_FALSE(table.IsOpen());
    table.Open();
    EXPECT_TRUE(table.Eof());
    EXPECT_EQ(table.Current(), SourceFolderRow{});
}

TEST_F(SourceFolderTable, AnEditReachesTheRowsWhenPosted) {
    table.MoveTo(1);
    table.Edit();
    table.Working().Directory = L"X";
    EXPECT_EQ(table.Current(), Folder(L"X"));
    EXPECT_THAT(Folders(), ElementsAre(L"A", L"B", L"C"));
    table.Cancel();
    EXPECT_EQ(table.Current(), Folder(L"B"));
    EXPECT_FALSE(table.Modified());

    table.Edit();
    table.Post();
    EXPECT_FALSE(table.Modified()) << "posted without a change";

    table.Edit();
    table.Working().Directory = L"X";
    table.Next();
    EXPECT_THAT(Folders(), ElementsAre(L"A", L"X", L"C"));
    EXPECT_EQ(table.Current(), Folder(L"C"));
    EXPECT_TRUE(table.Modified());
}

TEST_F(SourceFolderTable, NewRowsGoBeforeTheCurrentOneOrToTheEnd) {
    const std::uint64_t recIdOfB = table.RecId(1);
    table.MoveTo(1);
    table.Insert();
    EXPECT_EQ(table.InsertPosition(), 1u);
    table.Working().Directory = L"X";
    table.Append();
    table.Working().Directory = L"Y";
    table.Edit();
    EXPECT_EQ(table.State(), TState::Insert);
    table.Post();
    EXPECT_THAT(Folders(), ElementsAre(L"A", L"X", L"B", L"C", L"Y"));
    EXPECT_EQ(table.RowNumber(), 4u);
    EXPECT_EQ(table.RecId(2), recIdOfB);

    table.Append();
    table.Cancel();
    table.Append();
    table.First();
    EXPECT_EQ(table.RecordCount(), 5u) << "a new row without any entry is not kept";
    table.Append();
    table.Post();
    EXPECT_EQ(table.RecordCount(), 6u) << "unless it is posted";
}

TEST_F(SourceFolderTable, DeletingLeavesTheCursorOnTheNextRow) {
    const std::uint64_t highest = table.RecId(2);
    table.MoveTo(1);
    table.Delete();
    EXPECT_EQ(table.Current(), Folder(L"C"));
    table.Delete();
    EXPECT_EQ(table.Current(), Folder(L"A"));
    table.Edit();
    table.Delete();
    table.Delete();
    EXPECT_TRUE(table.IsEmpty());
    EXPECT_TRUE(table.Eof());
    EXPECT_TRUE(table.Modified());

    table.Edit();
    EXPECT_EQ(table.State(), TState::Insert);
    table.Delete();
    EXPECT_EQ(table.State(), TState::Browse);
    table.Insert();
    table.Post();
    EXPECT_GT(table.RecId(0), highest);
}

TEST_F(SourceFolderTable, RefusesTextThatItsFieldCannotHold) {
    table.Edit();
    table.Working().Directory = std::wstring(kDirectoryLength + 1, L'x');
    for (const auto& post : {&TSourceFolderTable::Post, &TSourceFolderTable::Next}) {
        EXPECT_EQ(
            ProblemIn([&] { (table.*post)(); }),
            (TProblem{
                .what = TProblemKind::TextTooLong, .number = 256, .limit = 255, .detail = L"Directory"}));
    }
    EXPECT_EQ(table.State(), TState::Edit);
    EXPECT_EQ(table.RowNumber(), 0u);
    EXPECT_EQ(table.Current().Directory->size(), kDirectoryLength + 1);
    EXPECT_THAT(Folders(), ElementsAre(L"A", L"B", L"C"));
    table.Working().Directory->pop_back();
    table.Post();
    EXPECT_EQ(table.Rows()[0].Directory->size(), kDirectoryLength);
}

TEST_F(SourceFolderTable, TellsOfEveryChange) {
    int changes = 0;
    const auto changesOf = [&changes](const auto& action) {
        changes = 0;
        action();
        return changes;
    };
    table.SetChangeHandler([&changes] { ++changes; });
    EXPECT_GT(changesOf([this] { table.Next(); }), 0);
    EXPECT_GT(changesOf([this] { table.Edit(); }), 0);
    EXPECT_GT(changesOf([this] { table.Cancel(); }), 0);
    EXPECT_GT(changesOf([this] { table.Append(); }), 0);
    EXPECT_GT(changesOf([this] { table.Post(); }), 0);
    EXPECT_GT(changesOf([this] { table.Delete(); }), 0);
    EXPECT_GT(changesOf([this] { table.Close(); }), 0);
}

}  // namespace
