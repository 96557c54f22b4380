#include "ui/grid_text.h"

#include <algorithm>

#include "support/utf16.h"

namespace {

constexpr wchar_t kEllipsis = L'…';
constexpr std::wstring_view kBreakBehind = L" \t\\/,;";

bool IsLineBreak(wchar_t character) {
    return character == L'\r' || character == L'\n';
}

std::wstring_view WithoutTrailingBlanks(std::wstring_view text) {
    const std::size_t last = text.find_last_not_of(L" \t");
    return text.substr(0, last == std::wstring_view::npos ? 0 : last + 1);
}

// The text up to and with the next place where a line may end.
std::size_t PieceLength(std::wstring_view text) {
    std::size_t end = std::min(text.find_first_of(kBreakBehind), text.size() - 1) + 1;
    // A run of such characters (blanks, the "\\" of a share) stays together.
    while (end < text.size() && kBreakBehind.find(text[end]) != std::wstring_view::npos) {
        ++end;
    }
    return end;
}

// How much of a paragraph fits on one line: at least one piece.
std::size_t LineLength(std::wstring_view paragraph, int width, const TMeasureText& measure) {
    std::size_t length = PieceLength(paragraph);
    while (length < paragraph.size()) {
        const std::size_t next = length + PieceLength(paragraph.substr(length));
        if (measure(WithoutTrailingBlanks(paragraph.substr(0, next))) > width) {
            break;
        }
        length = next;
    }
    return length;
}

}  // namespace

std::wstring CutWithEllipsis(std::wstring_view text, int width, const TMeasureText& measure) {
    if (measure(text) <= width) {
        return std::wstring(text);
    }
    // The widths of the beginnings grow with their lengths, so the longest that fits is found by halving.
    std::size_t fits = 0;
    std::size_t tooLong = text.size();
    while (tooLong - fits > 1) {
        const std::size_t middle = (fits + tooLong) / 2;
        if (measure(std::wstring(text.substr(0, middle)) + kEllipsis) <= width) {
            fits = middle;
        } else {
            tooLong = middle;
        }
    }
    return std::wstring(BeginningOf(text, fits)) + kEllipsis;
}

std::vector<std::wstring> BreakCellText(std::wstring_view text, int width, std::size_t maxLines,
                                        const TMeasureText& measure) {
    std::vector<std::wstring> lines;
    while (!text.empty() && lines.size() < maxLines) {
        const auto paragraphEnd =
            static_cast<std::size_t>(std::find_if(text.begin(), text.end(), IsLineBreak) - text.begin());
        const std::wstring_view paragraph = text.substr(0, paragraphEnd);
        const std::size_t length = paragraph.empty() ? 0 : LineLength(paragraph, width, measure);
        const bool lastLine = lines.size() + 1 == maxLines;
        std::wstring_view line = WithoutTrailingBlanks(paragraph.substr(0, length));
        text.remove_prefix(length);
        if (length == paragraphEnd && !text.empty()) {
            text.remove_prefix(text.starts_with(L"\r\n") ? 2 : 1);
        }
        if (lastLine && !text.empty()) {
            lines.push_back(CutWithEllipsis(std::wstring(line) + kEllipsis, width, measure));
        } else {
            lines.push_back(CutWithEllipsis(line, width, measure));
        }
    }
    if (lines.empty()) {
        lines.emplace_back();
    }
    return lines;
}
