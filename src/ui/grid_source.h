// Where a grid's rows come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

// A table with a cursor as a grid sees it. Columns count in the order in which the grid was given them. No
// operation throws: what goes wrong the source tells the user itself, and leaves the row as it was.
class TGridSource {
public:
    virtual ~TGridSource() = default;

    virtual std::size_t RowCount() const = 0;
    // The row the cursor stands on; nothing without rows.
    virtual std::optional<std::size_t> CurrentRow() const = 0;
    virtual void MoveTo(std::size_t row) = 0;
    // Tells a row from every other one, wherever it stands.
    virtual std::uint64_t RowKey(std::size_t row) const = 0;

    // The stored value of a cell that is no check box.
    virtual std::wstring Text(std::size_t row, std::size_t column) const = 0;
    virtual bool Checked(std::size_t row, std::size_t column) const = 0;
    // What is wrong with a row, which then wears a mark; empty if nothing.
    virtual std::wstring Warning(std::size_t) const { return {}; }
    // A cell that counts for nothing as things are.
    virtual bool Dimmed(std::size_t, std::size_t) const { return false; }

    // Changes a cell of the current row for good.
    virtual void SetText(std::size_t column, const std::wstring& text) = 0;
    virtual void SetChecked(std::size_t column, bool checked) = 0;

    // The ellipsis button of a cell of the current row was pressed.
    virtual void PressButton(std::size_t column) = 0;
    // The user wants the current row gone; the source asks back.
    virtual void AskDeleteRow() = 0;

    // Called after every change of rows, cursor or values.
    virtual void SetChangeHandler(std::function<void()> handler) = 0;
};
