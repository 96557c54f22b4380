// The status list on the screen.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "app/status_list_model.h"
#include "support/handles.h"
#include "ui/dpi.h"
#include "ui/scroll_bar.h"
#include "ui/tool_tips.h"

// Shows a TStatusListModel in the system's list control, which keeps no row of its own: it asks for what it
// shows. New rows come in above. The list follows them while its top is seen and nothing is selected; else
// the rows the user looks at, and the selected ones, stay where they are.
class TStatusListView {
public:
    explicit TStatusListView(const TStatusListModel& model) : model_(model) {}
    TStatusListView(const TStatusListView&) = delete;
    TStatusListView& operator=(const TStatusListView&) = delete;

    // False when the system refuses the control.
    [[nodiscard]] bool CreateIn(HWND parent, int id, TScale scale, HFONT font);
    HWND Handle() const { return handle_; }
    void SetScale(TScale scale, HFONT font);
    void Place(const RECT& area);

    // Brings the rows that were added or removed since the last call to the screen.
    void ShowChanges();

    // Answers the control's notifications; nothing for those it does not care about.
    std::optional<LRESULT> HandleNotification(NMHDR& notification);

    std::vector<std::size_t> SelectedRows() const;
    bool HasSelection() const { return SendMessageW(handle_, LVM_GETSELECTEDCOUNT, 0, 0) > 0; }
    void SelectAll();
    void CopySelection();
    // Selects the nearest Error row below (or above) the focused row, or the first one when no row has the
    // focus. False when there is none.
    bool SelectError(bool below);
    // The model's number of the focused row, if it is selected.
    std::optional<std::size_t> CurrentRow() const;
    // A row was double-clicked.
    std::function<void()> OnOpenRow;
    // Where a menu asked for by the keyboard belongs, in device pixels of the screen: below the focused row,
    // or at the top of the list when that row is out of sight.
    POINT MenuPoint() const;

private:
    using TRange = std::pair<int, int>;  // first row, and the one behind the last

    // The model's number of a row on the screen; nothing for one the model has no more.
    std::optional<std::size_t> ModelRow(int row) const;
    void ShowNewRows(int count);
    void ReadSelection();
    void MoveSelection(int count);
    void SetRowState(int row, UINT state, UINT mask);
    LRESULT CustomDraw(const NMLVCUSTOMDRAW& draw);
    void DrawRow(HDC context, int row) const;
    RECT RowArea(int row) const;
    void FillDisplayInformation(NMLVDISPINFOW& information) const;
    int FocusedRow() const;
    void ShowHintOf(int row);
    void PaintEmptyText(HDC context) const;
    bool HasErrorIn(int first, int behind) const;
    static LRESULT CALLBACK ListProcedure(HWND handle, UINT message, WPARAM wordParameter,
                                          LPARAM longParameter, UINT_PTR id, DWORD_PTR data);
    void FitColumn();
    int RowHeight() const;
    void ScrollBy(int rows);

    const TStatusListModel& model_;
    HWND handle_ = nullptr;
    TScrollBar scrollBar_;
    TToolTips hints_;
    int hintedRow_ = -1;
    TScale scale_;
    HFONT font_ = nullptr;
    // An empty image list: its height is the rows' height.
    HIMAGELIST rowHeight_ = nullptr;
    int shownRows_ = 0;
    unsigned shownGeneration_ = 0;
    // What is selected, read from the control when the user has changed it.
    std::vector<TRange> selection_;
    bool selectionChanged_ = false;
};
