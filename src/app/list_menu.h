// The context menu of the status list.
#pragma once

#include <windows.h>

#include <vector>

#include "app/status_list_view.h"
#include "ui/action.h"

// Shows the menu, with "copy the rows" above these actions (null: a line between them), and does what is
// chosen in it. The point is the one that came with WM_CONTEXTMENU, both coordinates -1 for a menu asked for
// by the keyboard.
void ShowListMenu(HWND window, TStatusListView& list, const std::vector<TAction*>& actions,
                  POINT screenPoint);
