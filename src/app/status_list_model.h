// The rows of the status list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ui/theme.h"

// What a row is about, by its status code. A row may have another code or none.
enum TRowStatus : int {
    kInfoStatus = -1,
    kFileNameStatus = 0,
    kErrorStatus = 1,
    kIgnoreStatus = 2,
};

// The style of a status; that of file names for no status and for any other.
const TRowStyle& StyleOfStatus(std::optional<int> status);

// How the width of a row is shared between its text and the reason behind it.
struct TRowShares {
    int text = 0;
    int reason = 0;
};

// The shares of a text and a reason of these widths with `gap` between them: the widths themselves when there
// is room; else the reason gives way first, down to 35 % of the row, and then the text.
TRowShares ShareRow(int width, int gap, int textWidth, int reasonWidth);

// The hint of a row: its whole text and the reason, in lines of which none is too long for a screen.
std::wstring HintOfRow(std::wstring_view text, std::wstring_view reason);

// Whether the text of a row is the path of a file and nothing else.
bool IsPathRow(std::wstring_view text);

// Holds the rows of the status list, the newest first. Adding costs the same however many there are; texts
// are kept in UTF-8, one behind the other.
class TStatusListModel {
public:
    std::size_t RowCount() const { return rows_.size(); }
    // Rows by their place in the list, 0 being the newest.
    std::wstring Text(std::size_t row) const;
    std::optional<int> Status(std::size_t row) const;
    // Why what the row tells of went wrong; empty for most rows.
    std::wstring Reason(std::size_t row) const;

    // The nearest Error row below or above a place in the list; -1 is the place above the first row.
    std::optional<std::size_t> ErrorBelow(std::ptrdiff_t row) const;
    std::optional<std::size_t> ErrorAbove(std::ptrdiff_t row) const;
    bool HasErrors() const { return !errors_.empty(); }

    void InsertAtTop(std::wstring_view text, std::optional<int> status, std::wstring_view reason = {});
    void Clear();
    // How often the list was emptied: tells a view that what it shows is gone.
    unsigned Generation() const { return generation_; }

    // The texts of the given rows, each with its reason behind a tab, if it has one, and a line break.
    template <typename Rows>
    std::wstring TextOfRows(const Rows& rows) const {
        std::wstring text;
        for (const std::size_t row : rows) {
            text += Text(row);
            if (const std::wstring reason = Reason(row); !reason.empty()) {
                text += L"\t" + reason;
            }
            text += L"\r\n";
        }
        return text;
    }

    // The memory held for texts and rows, in bytes.
    std::size_t BytesHeld() const;

private:
    static constexpr std::int32_t kNoStatus = std::numeric_limits<std::int32_t>::min();

    struct TRow {
        const char* text;
        std::uint32_t length;
        std::int32_t status;  // kNoStatus when the row has none
    };

    // Beside the rows, because among a million of them few have one.
    struct TReason {
        std::size_t row;  // its place in rows_
        std::string_view text;
    };

    const char* Keep(const std::string& text);
    const TRow& Row(std::size_t row) const { return rows_.at(rows_.size() - 1 - row); }

    std::deque<TRow> rows_;           // the oldest first
    std::deque<TReason> reasons_;     // in the order of their rows
    std::deque<std::size_t> errors_;  // the places in rows_ of the Error rows
    std::deque<std::unique_ptr<char[]>> blocks_;
    std::size_t blockBytes_ = 0;
    char* free_ = nullptr;
    std::size_t freeBytes_ = 0;
    unsigned generation_ = 0;
};
