#include "app/list_menu.h"

#include "ui/popup_menu.h"

namespace {

enum TItem : UINT_PTR { kCopyRows = 1, kRunLog };

}  // namespace

void ShowListMenu(HWND window, TStatusListView& list, TAction& runLog, POINT screenPoint) {
    if (screenPoint.x == -1 && screenPoint.y == -1) {
        screenPoint = list.MenuPoint();
    }
    // Not just "Kopieren": that is what the button says that starts a run.
    const TPopupMenu menu;
    AppendMenuW(menu.Get(), list.HasSelection() ? MF_STRING : MF_STRING | MF_GRAYED, kCopyRows,
                L"Zeilen kopieren\tStrg+C");
    AppendMenuW(menu.Get(), MF_STRING, kRunLog, (runLog.Caption() + L"\t" + runLog.Shortcut().name).c_str());
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
