// What a grid is told about one of its columns.
#pragma once

#include <string>
#include <vector>

enum class TGridEditor { CheckBox, ButtonText, MultiLineText, RadioGroup };

// One choice of a radio group: what is shown for a stored value.
struct TGridItem {
    std::wstring caption;
    std::wstring value;
};

struct TGridColumn {
    std::wstring name;  // by which a stored layout knows the column; letters and digits
    std::wstring caption;
    std::wstring hint;  // what the column means
    TGridEditor editor = TGridEditor::CheckBox;
    int width = 0;  // pixels at 100 %, as a share of the grid's width
    std::vector<TGridItem> items;
};
