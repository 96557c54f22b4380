// What a screen reader learns of a grid.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <atomic>
#include <optional>
#include <string>

// One cell, as it is read out.
struct TGridCellDescription {
    std::wstring name;   // the column's caption
    std::wstring value;  // empty for a check box
    std::wstring row;    // which row it stands in
    bool isCheckBox = false;
    bool isRadioButton = false;
    bool isChecked = false;
    bool isVisible = false;
    RECT area{};  // on the screen
};

// The side that is asked: a grid, or a list of choices. Cells count from the left to the right and from the
// top down.
class TGridAccessibleSide {
public:
    virtual ~TGridAccessibleSide() = default;

    virtual std::wstring GridName() const = 0;
    virtual std::size_t CellCount() const = 0;
    // 0: they stand in no rows.
    virtual std::size_t CellsPerRow() const { return 0; }
    virtual std::wstring RowName(std::size_t /*row*/) const { return {}; }
    virtual std::optional<std::size_t> FocusedCell() const = 0;
    virtual TGridCellDescription DescribeCell(std::size_t cell) const = 0;
    virtual std::optional<std::size_t> CellAt(POINT screenPoint) const = 0;
    virtual void SelectCell(std::size_t cell) = 0;
    // Toggles a check box, edits any other cell.
    virtual void DoCellAction(std::size_t cell) = 0;
};

// Answers for a grid, or for one row of it, through Microsoft Active Accessibility; see "IAccessible" in the
// Windows documentation. The children of a grid are its rows, objects of their own, and those of a row its
// cells, both numbered from 1 on; without rows the cells are the grid's. Counts its references itself and
// outlives the grid as long as somebody holds it.
class TGridAccessible final : public IAccessible {
public:
    // With one reference, the caller's.
    TGridAccessible(HWND window, TGridAccessibleSide& grid) : window_(window), grid_(&grid) {}
    // The grid goes away: from now on nothing is known.
    void Disconnect() { grid_ = nullptr; }

    // What a grid calls a cell in events. It knows the cells of its rows by these numbers, too.
    static LONG ChildOfCell(const TGridAccessibleSide& grid, std::size_t cell);

    STDMETHODIMP QueryInterface(REFIID identifier, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP get_accParent(IDispatch** parent) override;
    STDMETHODIMP get_accChildCount(long* count) override;
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** object) override;
    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override;
    STDMETHODIMP get_accValue(VARIANT child, BSTR* value) override;
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* description) override;
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override;
    STDMETHODIMP get_accState(VARIANT child, VARIANT* state) override;
    STDMETHODIMP get_accHelp(VARIANT, BSTR*) override { return S_FALSE; }
    STDMETHODIMP get_accHelpTopic(BSTR*, VARIANT, long*) override { return S_FALSE; }
    STDMETHODIMP get_accKeyboardShortcut(VARIANT, BSTR*) override { return S_FALSE; }
    STDMETHODIMP get_accFocus(VARIANT* child) override;
    STDMETHODIMP get_accSelection(VARIANT* children) override;
    STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* action) override;
    STDMETHODIMP accSelect(long flags, VARIANT child) override;
    STDMETHODIMP accLocation(long* left, long* top, long* width, long* height, VARIANT child) override;
    STDMETHODIMP accNavigate(long direction, VARIANT start, VARIANT* end) override;
    STDMETHODIMP accHitTest(long left, long top, VARIANT* child) override;
    STDMETHODIMP accDoDefaultAction(VARIANT child) override;
    STDMETHODIMP put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP put_accValue(VARIANT, BSTR) override { return E_NOTIMPL; }

private:
    TGridAccessible(TGridAccessible& whole, std::size_t row);
    ~TGridAccessible();

    // What a child identifier means: a cell, a row, the grid itself when it is neither, or an error.
    struct TTarget {
        HRESULT error = S_OK;
        std::optional<std::size_t> row = {};
        std::optional<std::size_t> cell = {};
    };
    TGridAccessibleSide* Grid() const { return whole_ != nullptr ? whole_->grid_ : grid_; }
    std::size_t RowCount() const;
    bool Holds(std::size_t cell) const;
    VARIANT CellVariant(std::optional<std::size_t> cell) const;
    VARIANT RowVariant(std::size_t row);
    RECT AreaOf(const TTarget& target) const;
    std::optional<std::size_t> FocusedCell() const;
    VARIANT ChildAtEnd(const TTarget& target, bool first);
    VARIANT Sibling(const TTarget& target, bool next);
    TTarget TargetOf(const VARIANT& child) const;
    template <typename Value, typename Work>
    HRESULT Answer(const VARIANT& child, Value* answer, Work work) const;
    template <typename Text>
    HRESULT AnswerText(const VARIANT& child, BSTR* answer, Text text) const;

    HWND window_;
    TGridAccessibleSide* grid_ = nullptr;
    TGridAccessible* whole_ = nullptr;  // of a row: the grid that it belongs to, counted
    std::size_t row_ = 0;
    std::atomic<ULONG> references_ = 1;
};

// The object of one window: made when somebody asks for it, parted from when the window goes.
class TGridAccessibleOwner {
public:
    TGridAccessibleOwner() = default;
    TGridAccessibleOwner(const TGridAccessibleOwner&) = delete;
    TGridAccessibleOwner& operator=(const TGridAccessibleOwner&) = delete;
    ~TGridAccessibleOwner() { Part(); }

    // Answers WM_GETOBJECT; nothing when it asks for something else.
    std::optional<LRESULT> Answer(HWND window, TGridAccessibleSide& grid, WPARAM wordParameter,
                                  LPARAM longParameter);
    void Part();

private:
    TGridAccessible* object_ = nullptr;
};
