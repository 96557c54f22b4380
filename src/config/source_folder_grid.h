// The source-folder table as the configuration window's grid shows it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "store/source_folder_table.h"
#include "support/problem.h"
#include "ui/grid_column.h"
#include "ui/grid_source.h"

// The grid's columns, in the order of the enumeration below.
std::vector<TGridColumn> SourceFolderColumns();

enum class TSourceFolderColumn : std::size_t {
    Aktive,
    History,
    Directory,
    Rekursiv,
    Hidden,
    Extensions,
    ExtensionMode,
};

// Lets a grid show and change a table. Each change of a cell is posted at once, so that a copy run works
// through what the user sees.
class TSourceFolderGrid final : public TGridSource {
public:
    // The table must outlive the object.
    explicit TSourceFolderGrid(TSourceFolderTable& table) : table_(table) {}

    // What the window does for the grid.
    std::function<void()> OnButtonClick;                         // ellipsis of the current row's folder
    std::function<bool(const std::wstring& folder)> OnDeleting;  // true: the row may go
    std::function<void(const TProblem& problem)> OnProblem;      // to be told
    std::function<void()> OnChanged;                             // rows, cursor or values
    std::function<void()> OnTaken;                               // a change by the user was good
    std::function<bool(const SourceFolderRow& row)> IsMissing;   // its folder is known not to be there

    std::size_t RowCount() const override;
    std::optional<std::size_t> CurrentRow() const override;
    void MoveTo(std::size_t row) override;
    std::uint64_t RowKey(std::size_t row) const override;
    std::wstring Text(std::size_t row, std::size_t column) const override;
    bool Checked(std::size_t row, std::size_t column) const override;
    std::wstring Warning(std::size_t row) const override;
    bool Dimmed(std::size_t row, std::size_t column) const override;
    void SetText(std::size_t column, const std::wstring& text) override;
    void SetChecked(std::size_t column, bool checked) override;
    void PressButton(std::size_t column) override;
    void AskDeleteRow() override;
    void SetChangeHandler(std::function<void()> handler) override;

    // Posts an edit of the current row, if there is one. False when the table has refused it; the user was
    // told and the row is as it was.
    bool PostEdit();

private:
    // The row as it is shown: the working copy of the current one while it is edited.
    const SourceFolderRow& Shown(std::size_t row) const;
    void Change(const std::function<void(SourceFolderRow&)>& change);

    TSourceFolderTable& table_;
};
