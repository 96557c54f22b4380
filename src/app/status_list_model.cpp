#include "app/status_list_model.h"

#include <algorithm>

#include "support/text.h"

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;
constexpr std::size_t kHintLine = 100;  // characters

// Breaks a text behind blanks and "\\", where a path may be broken.
std::wstring InShortLines(std::wstring_view text) {
    std::wstring lines;
    while (text.size() > kHintLine) {
        const std::size_t mark = text.find_last_of(L"\\ ", kHintLine - 1);
        const std::size_t length = mark == std::wstring_view::npos || mark == 0 ? kHintLine : mark + 1;
        lines.append(text.substr(0, length)).append(L"\r\n");
        text.remove_prefix(length);
    }
    return lines.append(text);
}

}  // namespace

const TRowStyle& StyleOfStatus(std::optional<int> status) {
    switch (status.value_or(kFileNameStatus)) {
        case kInfoStatus:
            return Theme().infoRow;
        case kErrorStatus:
            return Theme().errorRow;
        case kIgnoreStatus:
            return Theme().ignoreRow;
        default:
            return Theme().fileNameRow;
    }
}

TRowShares ShareRow(int width, int gap, int textWidth, int reasonWidth) {
    const int room = std::max(0, width - gap);
    const int reason = std::min(reasonWidth, std::max(width * 35 / 100, room - textWidth));
    return {std::max(0, std::min(textWidth, room - reason)), reason};
}

std::wstring HintOfRow(std::wstring_view text, std::wstring_view reason) {
    std::wstring hint = InShortLines(text);
    if (!reason.empty()) {
        hint += L"\r\n" + InShortLines(reason);
    }
    return hint;
}

bool IsPathRow(std::wstring_view text) {
    const bool onDrive = text.size() > 3 && text.substr(1, 2) == L":\\";
    return onDrive || text.starts_with(L"\\\\");
}

std::wstring TStatusListModel::Text(std::size_t row) const {
    const TRow& found = Row(row);
    return FromUtf8Lossy({found.text, found.length});
}

std::optional<int> TStatusListModel::Status(std::size_t row) const {
    const std::int32_t status = Row(row).status;
    return status == kNoStatus ? std::nullopt : std::optional<int>(status);
}

std::wstring TStatusListModel::Reason(std::size_t row) const {
    const std::size_t place = rows_.size() - 1 - row;
    const auto found = std::ranges::lower_bound(reasons_, place, {}, &TReason::row);
    return found != reasons_.end() && found->row == place ? FromUtf8Lossy(found->text) : std::wstring();
}

std::optional<std::size_t> TStatusListModel::ErrorBelow(std::ptrdiff_t row) const {
    const std::ptrdiff_t place = std::ssize(rows_) - 1 - row;
    const auto behind =
        std::ranges::lower_bound(errors_, static_cast<std::size_t>(std::max<std::ptrdiff_t>(place, 0)));
    if (behind == errors_.begin()) {
        return std::nullopt;
    }
    return rows_.size() - 1 - *std::prev(behind);
}

std::optional<std::size_t> TStatusListModel::ErrorAbove(std::ptrdiff_t row) const {
    const std::ptrdiff_t place = std::ssize(rows_) - 1 - row;
    const auto found =
        std::ranges::upper_bound(errors_, static_cast<std::size_t>(std::max<std::ptrdiff_t>(place, 0)));
    if (place < 0 || found == errors_.end()) {
        return std::nullopt;
    }
    return rows_.size() - 1 - *found;
}

void TStatusListModel::InsertAtTop(std::wstring_view text, std::optional<int> status,
                                   std::wstring_view reason) {
    if (!reason.empty()) {
        // A full disk gives every file the same reason.
        const std::string bytes = ToUtf8(InOneLine(reason));
        const bool isRepeated = !reasons_.empty() && reasons_.back().text == bytes;
        reasons_.push_back(
            {rows_.size(), isRepeated ? reasons_.back().text : std::string_view(Keep(bytes), bytes.size())});
    }
    if (status == kErrorStatus) {
        errors_.push_back(rows_.size());
    }
    const std::string bytes = ToUtf8(text);
    rows_.push_back({Keep(bytes), static_cast<std::uint32_t>(bytes.size()), status.value_or(kNoStatus)});
}

void TStatusListModel::Clear() {
    rows_.clear();
    reasons_.clear();
    errors_.clear();
    blocks_.clear();
    blockBytes_ = freeBytes_ = 0;
    free_ = nullptr;
    ++generation_;
}

const char* TStatusListModel::Keep(const std::string& text) {
    if (text.size() > freeBytes_) {
        const std::size_t size = std::max(kBlockSize, text.size());
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
        blockBytes_ += size;
        free_ = blocks_.back().get();
        freeBytes_ = size;
    }
    char* kept = free_;
    text.copy(kept, text.size());
    free_ += text.size();
    freeBytes_ -= text.size();
    return kept;
}

std::size_t TStatusListModel::BytesHeld() const {
    return blockBytes_ + blocks_.size() * sizeof(blocks_.front()) + rows_.size() * sizeof(TRow) +
           reasons_.size() * sizeof(TReason) + errors_.size() * sizeof(errors_.front());
}
