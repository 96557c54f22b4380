#include "app/list_menu.h"

#include <string>

#include "texts/main_texts.h"
#include "ui/popup_menu.h"

namespace {

constexpr UINT_PTR kCopyRows = 1;
constexpr UINT_PTR kFirstAction = 2;

std::wstring WithKeys(const std::wstring& caption, const std::wstring& keys) {
    return keys.empty() ? caption : caption + L"\t" + keys;
}

void AddItem(const TPopupMenu& menu, UINT_PTR id, const std::wstring& text, bool enabled) {
    AppendMenuW(menu.Get(), enabled ? MF_STRING : MF_STRING | MF_GRAYED, id, text.c_str());
}

}  // namespace

void ShowListMenu(HWND window, TStatusListView& list, const std::vector<TAction*>& actions,
                  POINT screenPoint) {
    if (screenPoint.x == -1 && screenPoint.y == -1) {
        screenPoint = list.MenuPoint();
    }
    const TPopupMenu menu;
    AddItem(menu, kCopyRows, WithKeys(MainTexts::CopyRows, MainTexts::CopyRowsKeys), list.HasSelection());
    for (std::size_t index = 0; index < actions.size(); ++index) {
        if (TAction* action = actions[index]) {
            action->Update();
            AddItem(menu, kFirstAction + index, WithKeys(action->Caption(), action->Shortcut().name),
                    action->Enabled());
        } else {
            AppendMenuW(menu.Get(), MF_SEPARATOR, 0, nullptr);
        }
    }
    const auto chosen = static_cast<UINT_PTR>(menu.Track(window, screenPoint));
    if (chosen == kCopyRows) {
        list.CopySelection();
    } else if (chosen >= kFirstAction) {
        actions.at(chosen - kFirstAction)->Execute();
    }
}
