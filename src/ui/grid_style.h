// The measures of a grid's cells at a scale of 100 %, shared by its painting and its editors.
#pragma once

namespace GridStyle {

inline constexpr int Indicator = 25;
inline constexpr int HeaderPadding = 5;  // above and below the caption
inline constexpr int CellPaddingX = 4;
inline constexpr int ChoicePaddingX = 2;  // of a cell that shows one of a few words
inline constexpr int CellPaddingY = 6;
inline constexpr int ButtonWidth = 22;
inline constexpr int ScrollBar = 12;
inline constexpr int MinimumColumn = 24;
inline constexpr int BorderReach = 4;
inline constexpr int LinesEditorWidth = 170;
inline constexpr int LinesEditorLines = 4;
inline constexpr int MaximumLines = 8;  // of a cell

}  // namespace GridStyle
