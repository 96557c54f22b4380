// What a grid is told about one of its columns.
#pragma once

#include <cstddef>
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
    TGridEditor editor = TGridEditor::CheckBox;
    int width = 0;              // pixels at 100 %, as a share of the grid's width
    std::size_t maxLength = 0;  // characters of a text; 0 for any number
    std::vector<TGridItem> items;
};
