// What one row of the source folders decides for all of them.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "store/source_folder_table.h"

// Whether the row's list of file types counts for nothing.
bool FilterIsOff(const SourceFolderRow& row);

// The rows by whose filter and whose History the next run goes, where active rows differ in them; nothing
// where it is all the same.
struct TRowRules {
    std::optional<std::size_t> filter;
    std::optional<std::size_t> history;
    std::vector<std::size_t> missing;  // active rows without a folder

    friend bool operator==(const TRowRules&, const TRowRules&) = default;
};

// `current`: the row on which the table's cursor stands.
TRowRules RulesOf(const std::vector<SourceFolderRow>& rows, std::optional<std::size_t> current,
                  const std::function<bool(const SourceFolderRow&)>& isMissing);
