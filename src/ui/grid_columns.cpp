#include "ui/grid_columns.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <numeric>
#include <optional>

namespace {

constexpr int kSharePerPixel = 100;
constexpr int kMaxShare = 10'000 * kSharePerPixel;
constexpr std::wstring_view kLayoutVersion = L"1";

// Divides a width by shares; the widths add up to it exactly.
std::vector<int> Divide(int available, const std::vector<int>& shares) {
    const auto total = std::accumulate(shares.begin(), shares.end(), std::int64_t{0});
    std::vector<int> widths;
    std::int64_t sum = 0;
    int taken = 0;
    for (const int share : shares) {
        sum += share;
        const int edge = total > 0 ? static_cast<int>((available * sum + total / 2) / total) : 0;
        widths.push_back(edge - taken);
        taken = edge;
    }
    return widths;
}

// As above, but nobody gets less than the minimum as long as there is enough for all.
std::vector<int> DivideWithMinimum(int available, const std::vector<int>& shares, int minimum) {
    const int count = static_cast<int>(shares.size());
    if (available <= minimum * count) {
        return Divide(std::max(available, 0), std::vector<int>(shares.size(), 1));
    }
    std::vector<bool> raised(shares.size(), false);
    for (;;) {
        int rest = available;
        std::vector<int> open = shares;
        for (std::size_t index = 0; index < shares.size(); ++index) {
            if (raised[index]) {
                open[index] = 0;
                rest -= minimum;
            }
        }
        std::vector<int> widths = Divide(rest, open);
        bool again = false;
        for (std::size_t index = 0; index < shares.size(); ++index) {
            if (!raised[index] && widths[index] < minimum) {
                raised[index] = again = true;
            }
        }
        if (again) {
            continue;
        }
        for (std::size_t index = 0; index < shares.size(); ++index) {
            if (raised[index]) {
                widths[index] = minimum;
            }
        }
        return widths;
    }
}

// Cuts the text off up to the separator, and takes the separator out too.
std::wstring_view TakePart(std::wstring_view& text, wchar_t separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::wstring_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::optional<int> ToNumber(std::wstring_view digits) {
    if (digits.empty() || digits.size() > 7) {
        return std::nullopt;
    }
    int number = 0;
    for (const wchar_t digit : digits) {
        if (digit < L'0' || digit > L'9') {
            return std::nullopt;
        }
        number = number * 10 + (digit - L'0');
    }
    return number;
}

}  // namespace

TGridColumns::TGridColumns(std::vector<TGridColumn> columns) : columns_(std::move(columns)) {
    assert(!columns_.empty());
    for (std::size_t index = 0; index < columns_.size(); ++index) {
        places_.push_back({index, columns_[index].width * kSharePerPixel, true});
    }
    FindVisible();
}

void TGridColumns::FindVisible() {
    visible_.clear();
    for (const TPlace& place : places_) {
        if (place.visible) {
            visible_.push_back(place.index);
        }
    }
}

TGridColumns::TPlace& TGridColumns::PlaceAt(std::size_t position) {
    const std::size_t index = visible_[position];
    return *std::find_if(places_.begin(), places_.end(),
                         [index](const TPlace& place) { return place.index == index; });
}

std::size_t TGridColumns::PositionOf(std::size_t index) const {
    return static_cast<std::size_t>(std::find(visible_.begin(), visible_.end(), index) - visible_.begin());
}

void TGridColumns::SetVisible(std::size_t index, bool visible) {
    if (!visible && visible_.size() == 1) {
        return;
    }
    std::find_if(places_.begin(), places_.end(), [index](const TPlace& place) {
        return place.index == index;
    })->visible = visible;
    FindVisible();
}

void TGridColumns::Move(std::size_t fromPosition, std::size_t toPosition) {
    const auto from = places_.begin() + (&PlaceAt(fromPosition) - places_.data());
    const auto to = places_.begin() + (&PlaceAt(toPosition) - places_.data());
    if (from < to) {
        std::rotate(from, from + 1, to + 1);
    } else {
        std::rotate(to, from, from + 1);
    }
    FindVisible();
}

std::vector<int> TGridColumns::Widths(int available, int minimum) const {
    std::vector<int> shares;
    for (const TPlace& place : places_) {
        if (place.visible) {
            shares.push_back(place.share);
        }
    }
    return DivideWithMinimum(available, shares, minimum);
}

void TGridColumns::Resize(std::size_t position, int width, int available, int minimum) {
    std::vector<int> widths = Widths(available, minimum);
    if (position + 1 >= widths.size()) {
        return;
    }
    const auto behind = widths.begin() + static_cast<std::ptrdiff_t>(position) + 1;
    const int room = std::accumulate(behind - 1, widths.end(), 0);
    const int widest = room - minimum * static_cast<int>(widths.end() - behind);
    if (widest < minimum) {
        return;
    }
    widths[position] = std::clamp(width, minimum, widest);
    const std::vector<int> others =
        DivideWithMinimum(room - widths[position], std::vector<int>(behind, widths.end()), minimum);
    std::copy(others.begin(), others.end(), behind);
    // The shares become the widths seen now; their sum stays, so that hidden columns keep their proportion.
    int sum = 0;
    for (std::size_t each = 0; each < widths.size(); ++each) {
        sum += PlaceAt(each).share;
    }
    const std::vector<int> shares = Divide(sum, widths);
    for (std::size_t each = 0; each < widths.size(); ++each) {
        PlaceAt(each).share = shares[each];
    }
}

std::wstring TGridColumns::Store() const {
    std::wstring text(kLayoutVersion);
    for (const TPlace& place : places_) {
        text += L";" + columns_[place.index].name + L"," + std::to_wstring(place.share) + L"," +
                (place.visible ? L"1" : L"0");
    }
    return text;
}

bool TGridColumns::Restore(std::wstring_view text) {
    if (TakePart(text, L';') != kLayoutVersion) {
        return false;
    }
    std::vector<TPlace> places;
    std::vector<bool> named(columns_.size(), false);
    while (!text.empty()) {
        std::wstring_view entry = TakePart(text, L';');
        const std::wstring_view name = TakePart(entry, L',');
        const std::optional<int> share = ToNumber(TakePart(entry, L','));
        if (!share || *share <= 0 || *share > kMaxShare || (entry != L"0" && entry != L"1")) {
            return false;
        }
        const auto column = std::find_if(columns_.begin(), columns_.end(),
                                         [name](const TGridColumn& each) { return each.name == name; });
        if (column == columns_.end()) {
            continue;
        }
        const auto index = static_cast<std::size_t>(column - columns_.begin());
        if (named[index]) {
            return false;
        }
        named[index] = true;
        places.push_back({index, *share, entry == L"1"});
    }
    for (const TPlace& place : places_) {
        if (!named[place.index]) {
            places.push_back(place);
        }
    }
    if (std::none_of(places.begin(), places.end(), [](const TPlace& place) { return place.visible; })) {
        return false;
    }
    places_ = std::move(places);
    FindVisible();
    return true;
}
