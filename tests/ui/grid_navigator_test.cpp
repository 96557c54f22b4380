#include "ui/grid_navigator.h"

#include <gtest/gtest.h>

#include <map>

namespace {

// A table of one check box, two texts and a radio group.
class TTestSource : public TGridSource {
public:
    std::size_t RowCount() const override { return keys.size(); }
    std::optional<std::size_t> CurrentRow() const override {
        return keys.empty() ? std::nullopt : std::optional(row);
    }
    void MoveTo(std::size_t to) override {
        row = to;
        Changed();
    }
    std::uint64_t RowKey(std::size_t of) const override { return keys[of]; }
    std::wstring Text(std::size_t of, std::size_t column) const override {
        const auto found = texts.find({keys[of], column});
        return found == texts.end() ? L"" : found->second;
    }
    bool Checked(std::size_t of, std::size_t column) const override { return Text(of, column) == L"x"; }
    void SetText(std::size_t column, const std::wstring& text) override {
        texts[{keys[row], column}] = text;
        Changed();
    }
    void SetChecked(std::size_t column, bool checked) override { SetText(column, checked ? L"x" : L""); }
    void PressButton(std::size_t) override { ++pressed; }
    void AskDeleteRow() override { ++deletions; }
    void SetChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }

    void Changed() {
        if (changed) {
            changed();
        }
    }

    std::vector<std::uint64_t> keys{11, 12, 13};
    std::map<std::pair<std::uint64_t, std::size_t>, std::wstring> texts;
    std::size_t row = 0;
    int pressed = 0;
    int deletions = 0;
    std::function<void()> changed;
};

class TTestHost : public TGridEditorHost {
public:
    void OpenEditor(std::size_t column, const std::wstring& text, bool selectAll) override {
        open = true;
        editedColumn = column;
        editorText = text;
        selected = selectAll;
    }
    std::wstring EditorText() const override { return editorText; }
    void CloseEditor() override {
        open = false;
        // As a real editor does: it loses the focus in going.
        if (lostFocus) {
            lostFocus();
        }
    }
    void FocusedCellChanged() override {}
    std::size_t PageFrom(std::size_t, bool down) const override { return down ? 2 : 0; }

    bool open = false;
    std::size_t editedColumn = 0;
    std::wstring editorText;
    bool selected = false;
    std::function<void()> lostFocus;
};

enum TColumns : std::size_t { Check, Folder, List, Mode };

class GridNavigator : public testing::Test {
protected:
    GridNavigator() {
        source.SetChangeHandler([this] { navigator.SourceChanged(); });
        host.lostFocus = [this] { navigator.TakeOver(); };
    }

    void Press(TGridKey key, TGridAnswer expected = TGridAnswer::Used) {
        EXPECT_EQ(navigator.Key(key), expected) << static_cast<int>(key);
    }
    void FocusOn(std::size_t row, std::size_t column) {
        navigator.Leave();
        source.row = row;
        navigator.EnterForward();
        for (std::size_t step = 0; step < column; ++step) {
            Press(TGridKey::Right);
        }
    }

    TGridColumns columns{{{L"check", L"", L"", TGridEditor::CheckBox, 10, {}},
                          {L"folder", L"", L"", TGridEditor::ButtonText, 10, {}},
                          {L"list", L"", L"", TGridEditor::MultiLineText, 10, {}},
                          {L"mode", L"", L"", TGridEditor::RadioGroup, 10, {}}}};
    TTestSource source;
    TTestHost host;
    TGridNavigator navigator{source, columns, host};
};

TEST_F(GridNavigator, ArrowsStayInsideAndTabWalksThroughTheRowAndOut) {
    Press(TGridKey::Up);
    Press(TGridKey::Left);
    EXPECT_EQ(source.row, 0u);
    for (int step = 0; step < 5; ++step) {
        Press(TGridKey::Down);
        Press(TGridKey::Right);
    }
    EXPECT_EQ(source.row, 2u);
    EXPECT_EQ(navigator.FocusedColumn(), Mode);
    Press(TGridKey::Tab, TGridAnswer::LeaveForward);
    navigator.EnterBackward();
    EXPECT_EQ(navigator.FocusedColumn(), Mode);
    Press(TGridKey::BackTab);
    EXPECT_EQ(navigator.FocusedColumn(), List);
    Press(TGridKey::Home);
    Press(TGridKey::BackTab, TGridAnswer::LeaveBackward);
    Press(TGridKey::FirstRow);
    Press(TGridKey::PageDown);
    EXPECT_EQ(source.row, 2u);
}

TEST_F(GridNavigator, AnEmptyTableLetsEveryKeyPass) {
    source.keys.clear();
    for (int key = 0; key <= static_cast<int>(TGridKey::Delete); ++key) {
        const TGridAnswer answer = navigator.Key(static_cast<TGridKey>(key));
        EXPECT_NE(answer, TGridAnswer::Used) << key;
    }
    EXPECT_FALSE(navigator.Character(L'a'));
    EXPECT_EQ(source.deletions, 0);
}

TEST_F(GridNavigator, EditsAreTakenOverOrLeft) {
    FocusOn(1, Folder);
    source.texts[{12, Folder}] = L"C:\\Alt";
    Press(TGridKey::Edit);
    EXPECT_TRUE(host.open);
    EXPECT_TRUE(host.selected);
    EXPECT_EQ(host.editorText, L"C:\\Alt");
    host.editorText = L"C:\\Falsch";
    Press(TGridKey::Left, TGridAnswer::NotUsed);  // belongs to the editor
    Press(TGridKey::Escape);
    EXPECT_FALSE(host.open);
    EXPECT_EQ(source.Text(1, Folder), L"C:\\Alt") << "closing the editor must not take its text over";

    EXPECT_TRUE(navigator.Character(L'D'));
    EXPECT_EQ(host.editorText, L"D");
    EXPECT_FALSE(host.selected);
    host.editorText = L"D:\\Neu";
    Press(TGridKey::Enter);
    EXPECT_EQ(source.Text(1, Folder), L"D:\\Neu");

    // Whatever else leads away keeps what was typed.
    const auto edited = [&](const std::wstring& text, const std::function<void()>& leave) {
        FocusOn(1, Folder);
        Press(TGridKey::Edit);
        host.editorText = text;
        leave();
        EXPECT_FALSE(host.open);
        EXPECT_EQ(source.Text(1, Folder), text);
    };
    edited(L"tab", [&] { Press(TGridKey::Tab); });
    edited(L"down", [&] { Press(TGridKey::Down); });
    EXPECT_EQ(source.row, 2u);
    edited(L"focus", [&] { navigator.TakeOver(); });
    edited(L"click", [&] { navigator.Click(0, Check, TGridNavigator::TSpot::CheckMark); });
    EXPECT_TRUE(source.Checked(0, Check));
    edited(L"button", [&] { Press(TGridKey::Button); });
    EXPECT_EQ(source.pressed, 1);
}

TEST_F(GridNavigator, EditorsOfSeveralLinesKeepTheirArrows) {
    for (const TColumns column : {List, Mode}) {
        FocusOn(0, column);
        Press(TGridKey::Enter);
        EXPECT_EQ(host.editedColumn, column);
        Press(TGridKey::Down, TGridAnswer::NotUsed);
        EXPECT_TRUE(navigator.Editing());
    }
}

TEST_F(GridNavigator, SpaceTogglesACheckBoxAndOpensARadioGroup) {
    Press(TGridKey::Space);
    EXPECT_TRUE(source.Checked(0, Check));
    Press(TGridKey::Space);
    EXPECT_FALSE(source.Checked(0, Check));
    EXPECT_FALSE(navigator.Character(L'a'));
    Press(TGridKey::Edit);
    EXPECT_FALSE(host.open);
    FocusOn(0, Mode);
    EXPECT_FALSE(navigator.Character(L'a'));
    Press(TGridKey::Space);
    EXPECT_TRUE(host.open);
}

TEST_F(GridNavigator, TheFirstClickFocusesTheSecondEdits) {
    navigator.Click(2, Folder, TGridNavigator::TSpot::Elsewhere);
    EXPECT_EQ(source.row, 2u);
    EXPECT_FALSE(host.open);
    navigator.Click(2, Folder, TGridNavigator::TSpot::Elsewhere);
    EXPECT_TRUE(host.open);
    navigator.Click(0, Folder, TGridNavigator::TSpot::Button);
    EXPECT_EQ(source.row, 0u);
    EXPECT_EQ(source.pressed, 1);
}

TEST_F(GridNavigator, AnEditEndsWhenItsRowIsNoLongerTheCurrentOne) {
    FocusOn(1, Folder);
    Press(TGridKey::Edit);
    host.editorText = L"typed";
    source.keys.erase(source.keys.begin() + 1);
    source.Changed();
    EXPECT_FALSE(host.open);
    EXPECT_EQ(source.Text(1, Folder), L"") << "the text belonged to another row";
}

TEST_F(GridNavigator, AFocusedColumnThatIsHiddenGivesTheFocusAway) {
    FocusOn(0, List);
    Press(TGridKey::Edit);
    columns.SetVisible(List, false);
    navigator.ColumnsChanged();
    EXPECT_FALSE(host.open);
    EXPECT_EQ(navigator.FocusedColumn(), Check);
}

}  // namespace
