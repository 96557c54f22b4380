#include "config/source_folder_grid.h"

#include "config/row_rules.h"
#include "texts/config_texts.h"

namespace {

constexpr std::size_t Number(TSourceFolderColumn column) {
    return static_cast<std::size_t>(column);
}

using TText = std::optional<std::wstring> SourceFolderRow::*;
using TFlag = std::optional<bool> SourceFolderRow::*;

// The field that a column shows: one of the two.
struct TField {
    TText text = nullptr;
    TFlag flag = nullptr;
};
constexpr TField kFields[] = {
    {.flag = &SourceFolderRow::Aktive},        {.flag = &SourceFolderRow::History},
    {.text = &SourceFolderRow::Directory},     {.flag = &SourceFolderRow::Rekursiv},
    {.flag = &SourceFolderRow::Hidden},        {.text = &SourceFolderRow::Extensions},
    {.text = &SourceFolderRow::ExtensionMode},
};

}  // namespace

std::vector<TGridColumn> SourceFolderColumns() {
    using namespace ConfigTexts;
    return {
        {L"cxGridDBTvAktive", Active, ActiveHint, TGridEditor::CheckBox, 47, {}},
        {L"cxGridDBTvHistory", History, HistoryHint, TGridEditor::CheckBox, 59, {}},
        {L"cxGridDBTvDirectory", Folder, FolderHint, TGridEditor::ButtonText, 243, {}},
        {L"cxGridDBTvRekursiv", Subfolders, SubfoldersHint, TGridEditor::CheckBox, 95, {}},
        {L"cxGridDBTvHidden", Hidden, HiddenHint, TGridEditor::CheckBox, 94, {}},
        {L"cxGridDBTvExtensions", FileTypes, FileTypesHint, TGridEditor::MultiLineText, 76, {}},
        {L"cxGridDBTvExtensionMode",
         Mode,
         ModeHint,
         TGridEditor::RadioGroup,
         72,
         {{ModeOff, L"NO"}, {ModeInclude, L"IN"}, {ModeExclude, L"EX"}}},
    };
}

std::size_t TSourceFolderGrid::RowCount() const {
    return table_.RecordCount() + (table_.InsertPosition() ? 1 : 0);
}

std::optional<std::size_t> TSourceFolderGrid::CurrentRow() const {
    if (const std::optional<std::size_t> inserted = table_.InsertPosition()) {
        return inserted;
    }
    return table_.IsEmpty() ? std::nullopt : std::optional(table_.RowNumber());
}

const SourceFolderRow& TSourceFolderGrid::Shown(std::size_t row) const {
    if (row == CurrentRow()) {
        return table_.Current();
    }
    const std::optional<std::size_t> inserted = table_.InsertPosition();
    return table_.Rows()[inserted && row > *inserted ? row - 1 : row];
}

std::uint64_t TSourceFolderGrid::RowKey(std::size_t row) const {
    const std::optional<std::size_t> inserted = table_.InsertPosition();
    if (row == inserted) {
        return 0;
    }
    return table_.RecId(inserted && row > *inserted ? row - 1 : row);
}

void TSourceFolderGrid::MoveTo(std::size_t row) {
    if (PostEdit()) {
        table_.MoveTo(row);
    }
}

std::wstring TSourceFolderGrid::Text(std::size_t row, std::size_t column) const {
    const TText field = kFields[column].text;
    return field != nullptr ? (Shown(row).*field).value_or(L"") : std::wstring();
}

bool TSourceFolderGrid::Checked(std::size_t row, std::size_t column) const {
    const TFlag field = kFields[column].flag;
    return field != nullptr && (Shown(row).*field).value_or(false);
}

std::wstring TSourceFolderGrid::Warning(std::size_t row) const {
    return IsMissing && IsMissing(Shown(row)) ? ConfigTexts::FolderNotThere : L"";
}

bool TSourceFolderGrid::Dimmed(std::size_t row, std::size_t column) const {
    return column == Number(TSourceFolderColumn::Extensions) && FilterIsOff(Shown(row));
}

void TSourceFolderGrid::SetText(std::size_t column, const std::wstring& text) {
    if (const TText field = kFields[column].text) {
        Change([&](SourceFolderRow& row) { row.*field = text; });
    }
}

void TSourceFolderGrid::SetChecked(std::size_t column, bool checked) {
    if (const TFlag field = kFields[column].flag) {
        Change([&](SourceFolderRow& row) { row.*field = checked; });
    }
}

void TSourceFolderGrid::Change(const std::function<void(SourceFolderRow&)>& change) {
    if (CurrentRow()) {
        table_.Edit();
        change(table_.Working());
        if (PostEdit() && OnTaken) {
            OnTaken();
        }
    }
}

bool TSourceFolderGrid::PostEdit() {
    try {
        table_.Post();
        return true;
    } catch (const EProblem& error) {
        table_.Cancel();
        if (OnProblem) {
            OnProblem(error.Problem());
        }
        return false;
    }
}

void TSourceFolderGrid::PressButton(std::size_t column) {
    if (column == Number(TSourceFolderColumn::Directory) && OnButtonClick) {
        OnButtonClick();
    }
}

void TSourceFolderGrid::AskDeleteRow() {
    const std::optional<std::size_t> row = CurrentRow();
    if (!row || !OnDeleting) {
        return;
    }
    const std::uint64_t key = RowKey(*row);
    // Messages are handled while the user is asked.
    if (OnDeleting(Shown(*row).Directory.value_or(L"")) && CurrentRow() == row && RowKey(*row) == key) {
        table_.Delete();
    }
}

void TSourceFolderGrid::SetChangeHandler(std::function<void()> handler) {
    table_.SetChangeHandler([this, changed = std::move(handler)] {
        if (changed) {
            changed();
        }
        if (OnChanged) {
            OnChanged();
        }
    });
}
