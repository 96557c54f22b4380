#include "store/source_folder_table.h"

#include <algorithm>
#include <cassert>

#include "support/problem.h"

namespace {

const SourceFolderRow kEmptyRow;

void CheckLength(const std::optional<std::wstring>& text, std::size_t limit, const wchar_t* field) {
    if (text && text->size() > limit) {
        throw EProblem(
            {.what = TProblemKind::TextTooLong, .number = text->size(), .limit = limit, .detail = field});
    }
}

void CheckLengths(const SourceFolderRow& row) {
    CheckLength(row.Directory, kDirectoryLength, L"Directory");
    CheckLength(row.Extensions, kExtensionsLength, L"Extensions");
    CheckLength(row.ExtensionMode, kExtensionModeLength, L"ExtensionMode");
}

}  // namespace

void TSourceFolderTable::Open() {
    if (!IsOpen()) {
        state_ = TState::Browse;
        MoveCursor(0, rows_.empty());
    }
}

void TSourceFolderTable::Close() {
    rows_.clear();
    recIds_.clear();
    working_ = {};
    state_ = TState::Closed;
    modified_ = false;
    MoveCursor(0, true);
}

void TSourceFolderTable::Assign(std::vector<SourceFolderRow> rows) {
    rows_ = std::move(rows);
    recIds_.resize(rows_.size());
    for (std::uint64_t& recId : recIds_) {
        recId = nextRecId_++;
    }
    working_ = {};
    state_ = TState::Browse;
    modified_ = false;
    MoveCursor(0, rows_.empty());
}

void TSourceFolderTable::First() {
    EndEdit();
    MoveCursor(0, rows_.empty());
}

void TSourceFolderTable::Next() {
    EndEdit();
    if (row_ + 1 < rows_.size()) {
        MoveCursor(row_ + 1, false);
    } else {
        MoveCursor(row_, true);
    }
}

void TSourceFolderTable::MoveTo(std::size_t row) {
    EndEdit();
    MoveCursor(rows_.empty() ? 0 : std::min(row, rows_.size() - 1), rows_.empty());
}

const SourceFolderRow& TSourceFolderTable::Current() const {
    if (state_ == TState::Edit || state_ == TState::Insert) {
        return working_;
    }
    return rows_.empty() ? kEmptyRow : rows_[row_];
}

std::uint64_t TSourceFolderTable::RecId(std::size_t row) const {
    return row < recIds_.size() ? recIds_[row] : 0;
}

std::optional<std::size_t> TSourceFolderTable::InsertPosition() const {
    return state_ == TState::Insert ? std::optional(insertAt_) : std::nullopt;
}

void TSourceFolderTable::Edit() {
    assert(IsOpen());
    if (state_ != TState::Browse) {
        return;
    }
    if (rows_.empty()) {
        BeginInsert(0);
        return;
    }
    working_ = rows_[row_];
    state_ = TState::Edit;
    Changed();
}

void TSourceFolderTable::Append() {
    assert(IsOpen());
    EndEdit();
    BeginInsert(rows_.size());
}

void TSourceFolderTable::Insert() {
    assert(IsOpen());
    EndEdit();
    BeginInsert(row_);
}

void TSourceFolderTable::BeginInsert(std::size_t position) {
    working_ = {};
    insertAt_ = position;
    state_ = TState::Insert;
    eof_ = false;
    Changed();
}

SourceFolderRow& TSourceFolderTable::Working() {
    assert(state_ == TState::Edit || state_ == TState::Insert);
    return working_;
}

void TSourceFolderTable::Post() {
    if (state_ != TState::Edit && state_ != TState::Insert) {
        return;
    }
    CheckLengths(working_);
    if (state_ == TState::Insert) {
        const auto offset = static_cast<std::ptrdiff_t>(insertAt_);
        rows_.insert(rows_.begin() + offset, std::move(working_));
        recIds_.insert(recIds_.begin() + offset, nextRecId_++);
        row_ = insertAt_;
        modified_ = true;
    } else if (rows_[row_] != working_) {
        rows_[row_] = std::move(working_);
        modified_ = true;
    }
    working_ = {};
    state_ = TState::Browse;
    MoveCursor(row_, false);
}

void TSourceFolderTable::Cancel() {
    if (state_ == TState::Edit || state_ == TState::Insert) {
        working_ = {};
        state_ = TState::Browse;
        MoveCursor(row_, rows_.empty());
    }
}

void TSourceFolderTable::Delete() {
    assert(IsOpen());
    if (state_ == TState::Insert) {
        Cancel();
        return;
    }
    if (rows_.empty()) {
        return;
    }
    const auto offset = static_cast<std::ptrdiff_t>(row_);
    rows_.erase(rows_.begin() + offset);
    recIds_.erase(recIds_.begin() + offset);
    working_ = {};
    state_ = TState::Browse;
    modified_ = true;
    MoveCursor(rows_.empty() ? 0 : std::min(row_, rows_.size() - 1), rows_.empty());
}

void TSourceFolderTable::EndEdit() {
    if (state_ == TState::Insert && working_ == SourceFolderRow{}) {
        Cancel();
    } else {
        Post();
    }
}

void TSourceFolderTable::MoveCursor(std::size_t row, bool eof) {
    row_ = row;
    eof_ = eof;
    Changed();
}

void TSourceFolderTable::Changed() const {
    if (changed_) {
        changed_();
    }
}
