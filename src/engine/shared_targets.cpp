#include "engine/shared_targets.h"

#include "support/case_folding.h"

TSharedTargets::TNames& TSharedTargets::NamesAt(const std::wstring& target) {
    const auto identity = FileIdentity(calls_, target);
    const std::wstring key = FoldedCase(target);
    const auto [first, last] = targets_.equal_range(key);
    for (auto known = first; known != last; ++known) {
        if (!known->second.identity || known->second.identity == identity) {
            return known->second.names;
        }
    }
    return targets_.emplace(key, TTarget{identity, {}})->second.names;
}
