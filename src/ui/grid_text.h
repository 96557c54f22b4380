// Breaks a cell's text into lines.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The width of a piece of text in device pixels.
using TMeasureText = std::function<int(std::wstring_view)>;

// The lines of a text in a cell of the given width. Lines break at line breaks, behind blanks, and behind
// "\", "/", "," and ";", where paths and lists can be parted. A piece that is wider than the cell is cut and
// ends in an ellipsis, as does the last line when there are more than `maxLines`. Never empty.
std::vector<std::wstring> BreakCellText(std::wstring_view text, int width, std::size_t maxLines,
                                        const TMeasureText& measure);

// As much of the text as fits, with an ellipsis if that is not all of it.
std::wstring CutWithEllipsis(std::wstring_view text, int width, const TMeasureText& measure);
