#include "config/row_rules.h"

#include "engine/extension_filter.h"
#include "support/text.h"

namespace {

TExtensionMode ModeOf(const SourceFolderRow& row) {
    return ParseExtensionMode(row.ExtensionMode.value_or(L""));
}

bool HaveSameFilter(const SourceFolderRow& left, const SourceFolderRow& right) {
    return ModeOf(left) == ModeOf(right) &&
           (FilterIsOff(left) ||
            EqualsIgnoringAsciiCase(left.Extensions.value_or(L""), right.Extensions.value_or(L"")));
}

bool IsKept(const SourceFolderRow& row) {
    return row.History.value_or(false);
}

}  // namespace

bool FilterIsOff(const SourceFolderRow& row) {
    return ModeOf(row) == TExtensionMode::All;
}

TRowRules RulesOf(const std::vector<SourceFolderRow>& rows, std::optional<std::size_t> current,
                  const std::function<bool(const SourceFolderRow&)>& isMissing) {
    TRowRules rules;
    const SourceFolderRow* firstActive = nullptr;
    std::optional<std::size_t> lastThere;
    bool filtersDiffer = false;
    bool historiesDiffer = false;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const SourceFolderRow& row = rows[index];
        if (!row.Aktive.value_or(false)) {
            continue;
        }
        if (firstActive == nullptr) {
            firstActive = &row;
        }
        filtersDiffer = filtersDiffer || !HaveSameFilter(row, *firstActive);
        // The current row counts also when it is not active.
        historiesDiffer = historiesDiffer || (current && IsKept(row) != IsKept(rows[*current]));
        if (isMissing(row)) {
            rules.missing.push_back(index);
        } else {
            lastThere = index;
        }
    }
    rules.filter = filtersDiffer ? lastThere : std::nullopt;
    rules.history = historiesDiffer ? current : std::nullopt;
    return rules;
}
