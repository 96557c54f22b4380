#include "ui/grid_accessible.h"

#include <new>
#include <utility>

#include "texts/ui_texts.h"

namespace {

VARIANT NumberVariant(long number) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = number;
    return variant;
}

const VARIANT kSelf = NumberVariant(CHILDID_SELF);

// Above all rows.
constexpr LONG kFirstCellInRows = 0x100000;

// COM's callers know no exceptions.
template <typename Work>
HRESULT Guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace

TGridAccessible::TGridAccessible(TGridAccessible& whole, std::size_t row)
    : window_(whole.window_), whole_(&whole), row_(row) {
    whole.AddRef();
}

TGridAccessible::~TGridAccessible() {
    if (whole_ != nullptr) {
        whole_->Release();
    }
}

LONG TGridAccessible::ChildOfCell(const TGridAccessibleSide& grid, std::size_t cell) {
    return static_cast<LONG>(cell) + (grid.CellsPerRow() == 0 ? 1 : kFirstCellInRows);
}

std::size_t TGridAccessible::RowCount() const {
    const std::size_t perRow = Grid()->CellsPerRow();
    return perRow == 0 ? 0 : Grid()->CellCount() / perRow;
}

// Whether a cell belongs to this grid or row.
bool TGridAccessible::Holds(std::size_t cell) const {
    const std::size_t perRow = Grid()->CellsPerRow();
    return whole_ == nullptr || (perRow != 0 && cell / perRow == row_);
}

VARIANT TGridAccessible::CellVariant(std::optional<std::size_t> cell) const {
    if (!cell || !Holds(*cell)) {
        return {};
    }
    if (whole_ == nullptr) {
        return NumberVariant(ChildOfCell(*Grid(), *cell));
    }
    return NumberVariant(static_cast<LONG>(*cell - row_ * Grid()->CellsPerRow()) + 1);
}

// A row is a number to the grid, and an object to another row.
VARIANT TGridAccessible::RowVariant(std::size_t row) {
    if (whole_ == nullptr) {
        return NumberVariant(static_cast<LONG>(row) + 1);
    }
    VARIANT variant{};
    variant.vt = VT_DISPATCH;
    variant.pdispVal = new TGridAccessible(*whole_, row);
    return variant;
}

STDMETHODIMP TGridAccessible::QueryInterface(REFIID identifier, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (!IsEqualIID(identifier, IID_IUnknown) && !IsEqualIID(identifier, IID_IDispatch) &&
        !IsEqualIID(identifier, IID_IAccessible)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IAccessible*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) TGridAccessible::AddRef() {
    return ++references_;
}

STDMETHODIMP_(ULONG) TGridAccessible::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

STDMETHODIMP TGridAccessible::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 0;
    return S_OK;
}

TGridAccessible::TTarget TGridAccessible::TargetOf(const VARIANT& child) const {
    const TGridAccessibleSide* grid = Grid();
    if (grid == nullptr || (whole_ != nullptr && row_ >= RowCount())) {
        return {CO_E_OBJNOTCONNECTED};
    }
    if (child.vt != VT_I4 || child.lVal < 0) {
        return {E_INVALIDARG};
    }
    const auto number = static_cast<std::size_t>(child.lVal);
    if (whole_ != nullptr) {
        const std::size_t perRow = grid->CellsPerRow();
        return number == 0        ? TTarget{S_OK, row_}
               : number <= perRow ? TTarget{S_OK, row_, row_ * perRow + number - 1}
                                  : TTarget{E_INVALIDARG};
    }
    if (number <= RowCount()) {
        return number == 0 ? TTarget{} : TTarget{S_OK, number - 1};
    }
    const auto firstCell = static_cast<std::size_t>(ChildOfCell(*grid, 0));
    return number < firstCell || number - firstCell >= grid->CellCount()
               ? TTarget{E_INVALIDARG}
               : TTarget{S_OK, std::nullopt, number - firstCell};
}

// `work` gets what is asked for and puts its answer in place of the empty one.
template <typename Value, typename Work>
HRESULT TGridAccessible::Answer(const VARIANT& child, Value* answer, Work work) const {
    if (answer == nullptr) {
        return E_POINTER;
    }
    *answer = Value{};
    return Guarded([&]() -> HRESULT {
        const TTarget target = TargetOf(child);
        return FAILED(target.error) ? target.error : work(target);
    });
}

template <typename Text>
HRESULT TGridAccessible::AnswerText(const VARIANT& child, BSTR* answer, Text text) const {
    return Answer(child, answer, [&](const TTarget& target) -> HRESULT {
        const std::wstring result = text(target);
        if (result.empty()) {
            return S_FALSE;
        }
        *answer = SysAllocStringLen(result.data(), static_cast<UINT>(result.size()));
        return *answer != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

STDMETHODIMP TGridAccessible::get_accParent(IDispatch** parent) {
    return Answer(kSelf, parent, [&](const TTarget&) -> HRESULT {
        if (whole_ != nullptr) {
            *parent = whole_;
            whole_->AddRef();
            return S_OK;
        }
        return AccessibleObjectFromWindow(window_, static_cast<DWORD>(OBJID_WINDOW), IID_IDispatch,
                                          reinterpret_cast<void**>(parent));
    });
}

STDMETHODIMP TGridAccessible::get_accChildCount(long* count) {
    return Answer(kSelf, count, [&](const TTarget&) {
        const std::size_t perRow = Grid()->CellsPerRow();
        *count = static_cast<long>(whole_ != nullptr ? perRow
                                   : perRow == 0     ? Grid()->CellCount()
                                                     : RowCount());
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accChild(VARIANT child, IDispatch** object) {
    return Answer(child, object, [&](const TTarget& target) {
        // Cells are no objects of their own.
        if (target.cell || !target.row || whole_ != nullptr) {
            return S_FALSE;
        }
        *object = new TGridAccessible(*this, *target.row);
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accName(VARIANT child, BSTR* name) {
    return AnswerText(child, name, [this](const TTarget& target) {
        return target.cell  ? Grid()->DescribeCell(*target.cell).name
               : target.row ? Grid()->RowName(*target.row)
                            : Grid()->GridName();
    });
}

STDMETHODIMP TGridAccessible::get_accValue(VARIANT child, BSTR* value) {
    return AnswerText(child, value, [this](const TTarget& target) {
        return target.cell ? Grid()->DescribeCell(*target.cell).value : std::wstring();
    });
}

STDMETHODIMP TGridAccessible::get_accDescription(VARIANT child, BSTR* description) {
    return AnswerText(child, description, [this](const TTarget& target) {
        return target.cell ? Grid()->DescribeCell(*target.cell).row : std::wstring();
    });
}

STDMETHODIMP TGridAccessible::get_accDefaultAction(VARIANT child, BSTR* action) {
    return AnswerText(child, action, [this](const TTarget& target) -> std::wstring {
        if (!target.cell) {
            return L"";
        }
        const TGridCellDescription description = Grid()->DescribeCell(*target.cell);
        return description.isRadioButton ? UiTexts::SwitchOn
               : !description.isCheckBox ? UiTexts::EditCell
               : description.isChecked   ? UiTexts::SwitchOff
                                         : UiTexts::SwitchOn;
    });
}

STDMETHODIMP TGridAccessible::get_accRole(VARIANT child, VARIANT* role) {
    return Answer(child, role, [&](const TTarget& target) {
        if (target.cell) {
            const TGridCellDescription description = Grid()->DescribeCell(*target.cell);
            *role = NumberVariant(description.isCheckBox      ? ROLE_SYSTEM_CHECKBUTTON
                                  : description.isRadioButton ? ROLE_SYSTEM_RADIOBUTTON
                                                              : ROLE_SYSTEM_CELL);
        } else {
            *role = NumberVariant(target.row                   ? ROLE_SYSTEM_ROW
                                  : Grid()->CellsPerRow() == 0 ? ROLE_SYSTEM_GROUPING
                                                               : ROLE_SYSTEM_TABLE);
        }
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accState(VARIANT child, VARIANT* state) {
    return Answer(child, state, [&](const TTarget& target) {
        long flags = STATE_SYSTEM_FOCUSABLE;
        const bool hasFocus = GetFocus() == window_;
        const std::optional<std::size_t> focused = Grid()->FocusedCell();
        bool isVisible = true;
        if (target.cell) {
            const TGridCellDescription description = Grid()->DescribeCell(*target.cell);
            flags |= STATE_SYSTEM_SELECTABLE | (description.isChecked ? STATE_SYSTEM_CHECKED : 0);
            isVisible = description.isVisible;
            if (focused == target.cell) {
                flags |= STATE_SYSTEM_SELECTED | (hasFocus ? STATE_SYSTEM_FOCUSED : 0);
            }
        } else if (target.row) {
            const std::size_t perRow = Grid()->CellsPerRow();
            // The cells have the focus.
            flags = STATE_SYSTEM_SELECTABLE;
            isVisible = Grid()->DescribeCell(*target.row * perRow).isVisible;
            if (focused && *focused / perRow == *target.row) {
                flags |= STATE_SYSTEM_SELECTED;
            }
        } else {
            flags |= hasFocus ? STATE_SYSTEM_FOCUSED : 0;
        }
        flags |= isVisible ? 0 : STATE_SYSTEM_INVISIBLE | STATE_SYSTEM_OFFSCREEN;
        *state = NumberVariant(flags);
        return S_OK;
    });
}

// If it is one of this grid or row.
std::optional<std::size_t> TGridAccessible::FocusedCell() const {
    const std::optional<std::size_t> cell = Grid()->FocusedCell();
    return cell && Holds(*cell) ? cell : std::nullopt;
}

STDMETHODIMP TGridAccessible::get_accFocus(VARIANT* child) {
    return Answer(kSelf, child, [&](const TTarget&) {
        const std::optional<std::size_t> cell = FocusedCell();
        if (GetFocus() != window_ || (whole_ != nullptr && !cell)) {
            return S_FALSE;
        }
        *child = cell ? CellVariant(cell) : kSelf;
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accSelection(VARIANT* children) {
    return Answer(kSelf, children, [&](const TTarget&) {
        *children = CellVariant(FocusedCell());
        return children->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

STDMETHODIMP TGridAccessible::accSelect(long flags, VARIANT child) {
    return Guarded([&] {
        const TTarget target = TargetOf(child);
        if (SUCCEEDED(target.error) && (flags & (SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION)) != 0) {
            if ((flags & SELFLAG_TAKEFOCUS) != 0) {
                SetFocus(window_);
            }
            if (target.cell) {
                Grid()->SelectCell(*target.cell);
            } else if (target.row) {
                // In the column that has the cursor.
                const std::size_t perRow = Grid()->CellsPerRow();
                Grid()->SelectCell(*target.row * perRow + Grid()->FocusedCell().value_or(0) % perRow);
            }
        }
        return target.error;
    });
}

RECT TGridAccessible::AreaOf(const TTarget& target) const {
    RECT area{};
    if (target.cell) {
        area = Grid()->DescribeCell(*target.cell).area;
    } else if (target.row) {
        const std::size_t perRow = Grid()->CellsPerRow();
        area = Grid()->DescribeCell(*target.row * perRow).area;
        area.right = Grid()->DescribeCell((*target.row + 1) * perRow - 1).area.right;
    } else {
        GetWindowRect(window_, &area);
    }
    return area;
}

STDMETHODIMP TGridAccessible::accLocation(long* left, long* top, long* width, long* height, VARIANT child) {
    if (left == nullptr || top == nullptr || width == nullptr || height == nullptr) {
        return E_POINTER;
    }
    *left = *top = *width = *height = 0;
    return Guarded([&] {
        const TTarget target = TargetOf(child);
        if (FAILED(target.error)) {
            return target.error;
        }
        const RECT area = AreaOf(target);
        *left = area.left;
        *top = area.top;
        *width = area.right - area.left;
        *height = area.bottom - area.top;
        return S_OK;
    });
}

// Of a grid's rows, a row's cells, or a grid's cells; empty when there are none.
VARIANT TGridAccessible::ChildAtEnd(const TTarget& target, bool first) {
    const std::size_t perRow = Grid()->CellsPerRow();
    const std::size_t cells = Grid()->CellCount();
    if (target.cell || cells == 0) {
        return {};
    }
    if (target.row) {
        return CellVariant(*target.row * perRow + (first ? 0 : perRow - 1));
    }
    return perRow == 0 ? CellVariant(first ? 0 : cells - 1) : RowVariant(first ? 0 : RowCount() - 1);
}

VARIANT TGridAccessible::Sibling(const TTarget& target, bool next) {
    const std::optional<std::size_t> from = target.cell ? target.cell : target.row;
    const std::size_t count = target.cell ? Grid()->CellCount() : RowCount();
    if (!from || (next ? *from + 1 >= count : *from == 0)) {
        return {};
    }
    const std::size_t to = next ? *from + 1 : *from - 1;
    if (!target.cell) {
        return RowVariant(to);
    }
    return Holds(to) ? CellVariant(to) : VARIANT{};
}

STDMETHODIMP TGridAccessible::accNavigate(long direction, VARIANT start, VARIANT* end) {
    return Answer(start, end, [&](const TTarget& from) {
        if (direction == NAVDIR_FIRSTCHILD || direction == NAVDIR_LASTCHILD) {
            *end = ChildAtEnd(from, direction == NAVDIR_FIRSTCHILD);
        } else if (direction == NAVDIR_NEXT || direction == NAVDIR_PREVIOUS) {
            *end = Sibling(from, direction == NAVDIR_NEXT);
        }
        return end->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

STDMETHODIMP TGridAccessible::accHitTest(long left, long top, VARIANT* child) {
    return Answer(kSelf, child, [&](const TTarget& target) {
        const RECT area = AreaOf(target);
        if (!PtInRect(&area, {left, top})) {
            return S_FALSE;
        }
        const std::optional<std::size_t> cell = Grid()->CellAt({left, top});
        *child = cell && Holds(*cell) ? CellVariant(cell) : kSelf;
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::accDoDefaultAction(VARIANT child) {
    return Guarded([&]() -> HRESULT {
        const TTarget target = TargetOf(child);
        if (FAILED(target.error)) {
            return target.error;
        }
        if (!target.cell) {
            return DISP_E_MEMBERNOTFOUND;
        }
        Grid()->DoCellAction(*target.cell);
        return S_OK;
    });
}

std::optional<LRESULT> TGridAccessibleOwner::Answer(HWND window, TGridAccessibleSide& grid,
                                                    WPARAM wordParameter, LPARAM longParameter) {
    if (static_cast<LONG>(longParameter) != OBJID_CLIENT) {
        return std::nullopt;
    }
    if (object_ == nullptr) {
        object_ = new TGridAccessible(window, grid);
    }
    return LresultFromObject(IID_IAccessible, wordParameter, object_);
}

void TGridAccessibleOwner::Part() {
    if (TGridAccessible* object = std::exchange(object_, nullptr)) {
        object->Disconnect();
        object->Release();
    }
}
