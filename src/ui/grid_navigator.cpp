#include "ui/grid_navigator.h"

TGridNavigator::TGridNavigator(TGridSource& source, const TGridColumns& columns, TGridEditorHost& host)
    : source_(source), columns_(columns), host_(host), column_(columns.Visible().front()) {}

TGridAnswer TGridNavigator::Key(TGridKey key) {
    if (Editing()) {
        return EditorKey(key);
    }
    if (key == TGridKey::Tab || key == TGridKey::BackTab) {
        return TabKey(key == TGridKey::BackTab);
    }
    if (!source_.CurrentRow()) {
        return TGridAnswer::NotUsed;
    }
    switch (key) {
        case TGridKey::Left:
        case TGridKey::Right:
            return MoveColumn(key == TGridKey::Right);
        case TGridKey::Home:
            GoTo(*source_.CurrentRow(), columns_.Visible().front());
            return TGridAnswer::Used;
        case TGridKey::End:
            GoTo(*source_.CurrentRow(), columns_.Visible().back());
            return TGridAnswer::Used;
        case TGridKey::Enter:
        case TGridKey::Edit:
            EditIfPossible();
            return TGridAnswer::Used;
        case TGridKey::Button:
            PressButton();
            return TGridAnswer::Used;
        case TGridKey::Delete:
            source_.AskDeleteRow();
            return TGridAnswer::Used;
        case TGridKey::Space:
            return Character(L' ') ? TGridAnswer::Used : TGridAnswer::NotUsed;
        case TGridKey::Escape:
            return TGridAnswer::NotUsed;
        default:
            return MoveRow(key);
    }
}

TGridAnswer TGridNavigator::EditorKey(TGridKey key) {
    switch (key) {
        case TGridKey::Enter:
            TakeOver();
            return TGridAnswer::Used;
        case TGridKey::Escape:
            Leave();
            return TGridAnswer::Used;
        case TGridKey::Tab:
        case TGridKey::BackTab:
            TakeOver();
            return TabKey(key == TGridKey::BackTab);
        case TGridKey::Button:
            if (FocusedEditor() != TGridEditor::ButtonText) {
                return TGridAnswer::NotUsed;
            }
            TakeOver();
            PressButton();
            return TGridAnswer::Used;
        case TGridKey::Up:
        case TGridKey::Down:
            // In an editor with several lines these move inside of it.
            if (FocusedEditor() != TGridEditor::ButtonText) {
                return TGridAnswer::NotUsed;
            }
            TakeOver();
            return MoveRow(key);
        default:
            return TGridAnswer::NotUsed;
    }
}

TGridAnswer TGridNavigator::TabKey(bool backward) {
    const std::vector<std::size_t>& visible = columns_.Visible();
    const bool atEnd = column_ == (backward ? visible.front() : visible.back());
    if (atEnd || !source_.CurrentRow()) {
        return backward ? TGridAnswer::LeaveBackward : TGridAnswer::LeaveForward;
    }
    return MoveColumn(!backward);
}

TGridAnswer TGridNavigator::MoveColumn(bool forward) {
    const std::vector<std::size_t>& visible = columns_.Visible();
    const std::size_t position = columns_.PositionOf(column_);
    if (forward ? position + 1 < visible.size() : position > 0) {
        GoTo(*source_.CurrentRow(), visible[forward ? position + 1 : position - 1]);
    }
    return TGridAnswer::Used;
}

TGridAnswer TGridNavigator::MoveRow(TGridKey key) {
    const std::optional<std::size_t> current = source_.CurrentRow();
    if (!current) {
        return TGridAnswer::Used;
    }
    const std::size_t last = source_.RowCount() - 1;
    switch (key) {
        case TGridKey::Up:
            GoTo(*current == 0 ? 0 : *current - 1, column_);
            break;
        case TGridKey::Down:
            GoTo(*current == last ? last : *current + 1, column_);
            break;
        case TGridKey::PageUp:
        case TGridKey::PageDown:
            GoTo(host_.PageFrom(*current, key == TGridKey::PageDown), column_);
            break;
        case TGridKey::FirstRow:
            GoTo(0, column_);
            break;
        case TGridKey::LastRow:
            GoTo(last, column_);
            break;
        default:
            return TGridAnswer::NotUsed;
    }
    return TGridAnswer::Used;
}

void TGridNavigator::GoTo(std::size_t row, std::size_t column) {
    column_ = column;
    if (source_.CurrentRow() != row) {
        source_.MoveTo(row);
    }
    host_.FocusedCellChanged();
}

bool TGridNavigator::Character(wchar_t character) {
    if (Editing() || !source_.CurrentRow()) {
        return false;
    }
    switch (FocusedEditor()) {
        case TGridEditor::CheckBox:
            if (character == L' ') {
                Toggle();
            }
            return character == L' ';
        case TGridEditor::RadioGroup:
            if (character == L' ') {
                EditStoredText();
            }
            return character == L' ';
        default:
            if (character < L' ' || character == L'\x7F') {  // Ctrl+Backspace
                return false;
            }
            BeginEdit(std::wstring(1, character), false);
            return true;
    }
}

void TGridNavigator::Click(std::size_t row, std::size_t column, TSpot spot) {
    TakeOver();
    const bool wasFocused = source_.CurrentRow() == row && column_ == column;
    GoTo(row, column);
    if (source_.CurrentRow() != row) {
        return;
    }
    if (spot == TSpot::CheckMark) {
        Toggle();
    } else if (spot == TSpot::Button) {
        PressButton();
    } else if (wasFocused) {
        EditIfPossible();
    }
}

void TGridNavigator::Focus(std::size_t row, std::size_t column) {
    TakeOver();
    GoTo(row, column);
}

void TGridNavigator::EditIfPossible() {
    if (FocusedEditor() != TGridEditor::CheckBox) {
        EditStoredText();
    }
}

void TGridNavigator::EnterForward() {
    column_ = columns_.Visible().front();
    host_.FocusedCellChanged();
}

void TGridNavigator::EnterBackward() {
    column_ = columns_.Visible().back();
    host_.FocusedCellChanged();
}

void TGridNavigator::BeginEdit(const std::wstring& text, bool selectAll) {
    editedRow_ = source_.RowKey(*source_.CurrentRow());
    host_.OpenEditor(column_, text, selectAll);
}

void TGridNavigator::EditStoredText() {
    BeginEdit(source_.Text(*source_.CurrentRow(), column_), true);
}

void TGridNavigator::TakeOver() {
    if (!Editing()) {
        return;
    }
    const std::wstring text = host_.EditorText();
    Leave();
    if (text != source_.Text(*source_.CurrentRow(), column_)) {
        source_.SetText(column_, text);
    }
}

void TGridNavigator::Leave() {
    if (Editing()) {
        // Before the editor goes: it loses the focus then, which would take the text over.
        editedRow_.reset();
        host_.CloseEditor();
    }
}

void TGridNavigator::Toggle() {
    source_.SetChecked(column_, !source_.Checked(*source_.CurrentRow(), column_));
}

void TGridNavigator::PressButton() {
    if (FocusedEditor() == TGridEditor::ButtonText) {
        source_.PressButton(column_);
    } else {
        EditIfPossible();
    }
}

void TGridNavigator::SourceChanged() {
    const std::optional<std::size_t> current = source_.CurrentRow();
    if (Editing() && (!current || source_.RowKey(*current) != *editedRow_)) {
        Leave();
    }
}

void TGridNavigator::ColumnsChanged() {
    if (columns_.PositionOf(column_) == columns_.Visible().size()) {
        Leave();
        column_ = columns_.Visible().front();
    }
}
