#include "app/list_menu.h"

#include <string>

#include "texts/main_texts.h"
#include "ui/popup_menu.h"

namespace {

enum TItem : UINT_PTR { kCopyRows = 1, kRunLog };

std::wstring WithKeys(const std::wstring& caption, const std::wstring& keys) {
    return caption + L"\t" + keys;
}

}  // namespace

void ShowListMenu(HWND window, TStatusListView& list, TAction& runLog, POINT screenPoint) {
    if (screenPoint.x == -1 && screenPoint.y == -1) {
        screenPoint = list.MenuPoint();
    }
    const TPopupMenu menu;
    AppendMenuW(menu.Get(), list.HasSelection() ? MF_STRING : MF_STRING | MF_GRAYED, kCopyRows,
                WithKeys(MainTexts::CopyRows, MainTexts::CopyRowsKeys).c_str());
    AppendMenuW(menu.Get(), MF_STRING, kRunLog, WithKeys(runLog.Caption(), runLog.Shortcut().name).c_str());
    switch (menu.Track(window, screenPoint)) {
        case kCopyRows:
            list.CopySelection();
            break;
        case kRunLog:
            runLog.Execute();
            break;
        default:
            break;
    }
}
