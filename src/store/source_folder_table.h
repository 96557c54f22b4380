// The list of source folders that a copy run works through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The most characters that the text fields hold.
inline constexpr std::size_t kDirectoryLength = 255;
inline constexpr std::size_t kExtensionsLength = 255;
inline constexpr std::size_t kExtensionModeLength = 5;

// One source folder and how it is copied. A field without a value is one the table file marks so; it
// counts as false or empty.
struct SourceFolderRow {
    std::optional<bool> Aktive;              // takes part in copy runs and in reindexing
    std::optional<std::wstring> Directory;   // at most kDirectoryLength characters
    std::optional<bool> Rekursiv;            // with its sub-folders
    std::optional<std::wstring> Extensions;  // separated by commas, with their dots; at most 255 characters
    std::optional<std::wstring> ExtensionMode;  // "NO", "IN" or "EX"
    std::optional<bool> History;                // keep earlier copies under numbered names
    std::optional<bool> Hidden;                 // hidden folders too

    friend bool operator==(const SourceFolderRow&, const SourceFolderRow&) = default;
};

// The source-folder table: rows in the order of insertion, a cursor that stands on one of them, and an edit
// state. Changes are made to a working copy of the current row and reach the table when they are posted.
class TSourceFolderTable {
public:
    enum class TState { Closed, Browse, Edit, Insert };

    bool IsOpen() const { return state_ != TState::Closed; }
    TState State() const { return state_; }
    void Open();
    // Drops the rows, an edit in progress included.
    void Close();

    std::size_t RecordCount() const { return rows_.size(); }
    bool IsEmpty() const { return rows_.empty(); }
    const std::vector<SourceFolderRow>& Rows() const { return rows_; }

    // The cursor. Moving it first ends an edit in progress: it is posted (so moving can throw what Post
    // throws), or dropped when it is a new row in which nothing was entered. Eof is true once Next was called
    // on the last row, and for an empty table.
    void First();
    void Next();
    // To a row by its number after that; the last one when there are not so many.
    void MoveTo(std::size_t row);
    bool Eof() const { return eof_; }
    std::size_t RowNumber() const { return row_; }

    // The current row as its editor sees it: the working copy while one exists. An empty row when the table
    // is empty and nothing is being inserted.
    const SourceFolderRow& Current() const;
    // The automatic number of a row, never used twice while the table is open; 0 when there is no such row.
    std::uint64_t RecId(std::size_t row) const;

    // Edit of an empty table begins an insertion. Append adds behind the last row, Insert before the current
    // one; both first end an edit in progress as moving the cursor does. The table must be open.
    void Edit();
    void Append();
    void Insert();
    // Ends the edit; without one it does nothing. Throws EProblem (TextTooLong) when a text is longer than
    // its field: the edit then goes on and the rows are unchanged.
    void Post();
    // Drops the edit, if there is one.
    void Cancel();
    // Removes the current row, or drops the insertion in progress.
    void Delete();
    // The working copy, for the duration of an edit; changing it outside of one is a programming error.
    SourceFolderRow& Working();

    // Where the row being inserted will stand among the others; nothing when none is.
    std::optional<std::size_t> InsertPosition() const;

    // Whether rows were changed, added or removed since they were last loaded or saved.
    bool Modified() const { return modified_; }
    void SetModified(bool modified) { modified_ = modified; }

    // Replaces all rows and opens the table, as loading does; the cursor stands on the first.
    void Assign(std::vector<SourceFolderRow> rows);

    // Called after every change of rows, cursor or state; must not change the table itself.
    void SetChangeHandler(std::function<void()> handler) { changed_ = std::move(handler); }

private:
    void EndEdit();
    void BeginInsert(std::size_t position);
    void MoveCursor(std::size_t row, bool eof);
    void Changed() const;

    std::vector<SourceFolderRow> rows_;
    std::vector<std::uint64_t> recIds_;
    std::uint64_t nextRecId_ = 1;
    std::size_t row_ = 0;
    bool eof_ = true;
    TState state_ = TState::Closed;
    SourceFolderRow working_;
    std::size_t insertAt_ = 0;
    bool modified_ = false;
    std::function<void()> changed_;
};
