#include "ui/grid_accessible.h"

#include <new>

#include "texts/ui_texts.h"

namespace {

VARIANT NumberVariant(long number) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = number;
    return variant;
}

const VARIANT kSelf = NumberVariant(CHILDID_SELF);

VARIANT CellVariant(std::optional<std::size_t> cell) {
    return cell ? NumberVariant(static_cast<long>(*cell) + 1) : VARIANT{};
}

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
    if (grid_ == nullptr) {
        return {CO_E_OBJNOTCONNECTED, std::nullopt};
    }
    if (child.vt != VT_I4 || child.lVal < 0 || static_cast<std::size_t>(child.lVal) > grid_->CellCount()) {
        return {E_INVALIDARG, std::nullopt};
    }
    if (child.lVal == CHILDID_SELF) {
        return {};
    }
    return {S_OK, static_cast<std::size_t>(child.lVal) - 1};
}

// `work` gets the cell, none for the grid itself, and puts its answer in place of the empty one.
template <typename Value, typename Work>
HRESULT TGridAccessible::Answer(const VARIANT& child, Value* answer, Work work) const {
    if (answer == nullptr) {
        return E_POINTER;
    }
    *answer = Value{};
    return Guarded([&]() -> HRESULT {
        const TTarget target = TargetOf(child);
        return FAILED(target.error) ? target.error : work(target.cell);
    });
}

// `text` gives the text of a cell, or of the grid itself when there is none.
template <typename Text>
HRESULT TGridAccessible::AnswerText(const VARIANT& child, BSTR* answer, Text text) const {
    return Answer(child, answer, [&](std::optional<std::size_t> cell) -> HRESULT {
        const std::wstring result = text(cell);
        if (result.empty()) {
            return S_FALSE;
        }
        *answer = SysAllocStringLen(result.data(), static_cast<UINT>(result.size()));
        return *answer != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

STDMETHODIMP TGridAccessible::get_accParent(IDispatch** parent) {
    return Answer(kSelf, parent, [&](std::optional<std::size_t>) {
        return AccessibleObjectFromWindow(window_, static_cast<DWORD>(OBJID_WINDOW), IID_IDispatch,
                                          reinterpret_cast<void**>(parent));
    });
}

STDMETHODIMP TGridAccessible::get_accChildCount(long* count) {
    return Answer(kSelf, count, [&](std::optional<std::size_t>) {
        *count = static_cast<long>(grid_->CellCount());
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accChild(VARIANT child, IDispatch** object) {
    // Cells are no objects of their own.
    return Answer(child, object, [](std::optional<std::size_t>) { return S_FALSE; });
}

STDMETHODIMP TGridAccessible::get_accName(VARIANT child, BSTR* name) {
    return AnswerText(child, name, [this](std::optional<std::size_t> cell) {
        return cell ? grid_->DescribeCell(*cell).name : grid_->GridName();
    });
}

STDMETHODIMP TGridAccessible::get_accValue(VARIANT child, BSTR* value) {
    return AnswerText(child, value, [this](std::optional<std::size_t> cell) {
        return cell ? grid_->DescribeCell(*cell).value : std::wstring();
    });
}

STDMETHODIMP TGridAccessible::get_accDescription(VARIANT child, BSTR* description) {
    return AnswerText(child, description, [this](std::optional<std::size_t> cell) {
        return cell ? grid_->DescribeCell(*cell).row : std::wstring();
    });
}

STDMETHODIMP TGridAccessible::get_accDefaultAction(VARIANT child, BSTR* action) {
    return AnswerText(child, action, [this](std::optional<std::size_t> cell) -> std::wstring {
        if (!cell) {
            return L"";
        }
        const TGridCellDescription description = grid_->DescribeCell(*cell);
        return !description.isCheckBox ? UiTexts::EditCell
               : description.isChecked ? UiTexts::SwitchOff
                                       : UiTexts::SwitchOn;
    });
}

STDMETHODIMP TGridAccessible::get_accRole(VARIANT child, VARIANT* role) {
    return Answer(child, role, [&](std::optional<std::size_t> cell) {
        *role = NumberVariant(!cell                                   ? ROLE_SYSTEM_TABLE
                              : grid_->DescribeCell(*cell).isCheckBox ? ROLE_SYSTEM_CHECKBUTTON
                                                                      : ROLE_SYSTEM_CELL);
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accState(VARIANT child, VARIANT* state) {
    return Answer(child, state, [&](std::optional<std::size_t> cell) {
        long flags = STATE_SYSTEM_FOCUSABLE;
        const bool hasFocus = GetFocus() == window_;
        if (!cell) {
            flags |= hasFocus ? STATE_SYSTEM_FOCUSED : 0;
        } else {
            const TGridCellDescription description = grid_->DescribeCell(*cell);
            flags |= STATE_SYSTEM_SELECTABLE | (description.isChecked ? STATE_SYSTEM_CHECKED : 0) |
                     (description.isVisible ? 0 : STATE_SYSTEM_INVISIBLE | STATE_SYSTEM_OFFSCREEN);
            if (grid_->FocusedCell() == cell) {
                flags |= STATE_SYSTEM_SELECTED | (hasFocus ? STATE_SYSTEM_FOCUSED : 0);
            }
        }
        *state = NumberVariant(flags);
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accFocus(VARIANT* child) {
    return Answer(kSelf, child, [&](std::optional<std::size_t>) {
        if (GetFocus() != window_) {
            return S_FALSE;
        }
        const std::optional<std::size_t> cell = grid_->FocusedCell();
        *child = cell ? CellVariant(cell) : kSelf;
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::get_accSelection(VARIANT* children) {
    return Answer(kSelf, children, [&](std::optional<std::size_t>) {
        *children = CellVariant(grid_->FocusedCell());
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
                grid_->SelectCell(*target.cell);
            }
        }
        return target.error;
    });
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
        RECT area{};
        if (target.cell) {
            area = grid_->DescribeCell(*target.cell).area;
        } else {
            GetWindowRect(window_, &area);
        }
        *left = area.left;
        *top = area.top;
        *width = area.right - area.left;
        *height = area.bottom - area.top;
        return S_OK;
    });
}

STDMETHODIMP TGridAccessible::accNavigate(long direction, VARIANT start, VARIANT* end) {
    return Answer(start, end, [&](std::optional<std::size_t> from) {
        const std::size_t count = grid_->CellCount();
        std::optional<std::size_t> cell;
        if (!from) {
            cell = count == 0                       ? std::nullopt
                   : direction == NAVDIR_FIRSTCHILD ? std::optional<std::size_t>(0)
                   : direction == NAVDIR_LASTCHILD  ? std::optional(count - 1)
                                                    : std::nullopt;
        } else if (direction == NAVDIR_NEXT && *from + 1 < count) {
            cell = *from + 1;
        } else if (direction == NAVDIR_PREVIOUS && *from > 0) {
            cell = *from - 1;
        }
        *end = CellVariant(cell);
        return cell ? S_OK : S_FALSE;
    });
}

STDMETHODIMP TGridAccessible::accHitTest(long left, long top, VARIANT* child) {
    return Answer(kSelf, child, [&](std::optional<std::size_t>) {
        RECT window{};
        GetWindowRect(window_, &window);
        if (!PtInRect(&window, {left, top})) {
            return S_FALSE;
        }
        const std::optional<std::size_t> cell = grid_->CellAt({left, top});
        *child = cell ? CellVariant(cell) : kSelf;
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
        grid_->DoCellAction(*target.cell);
        return S_OK;
    });
}
