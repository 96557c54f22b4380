// Destination folders that several source folders share.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "support/file_identity.h"
#include "support/platform_calls.h"

// Two folders whose destinations differ only in case are one folder there, unless they are known to be two.
// The file that came first keeps its place.
class TSharedTargets {
public:
    using TNames = std::set<std::wstring>;

    explicit TSharedTargets(const TPlatformCalls& calls) : calls_(calls) {}

    // The names that files of the folder were given so far, in upper case.
    TNames& NamesAt(const std::wstring& target);

private:
    struct TTarget {
        std::optional<TFileIdentity> identity;  // none while it does not exist
        TNames names;
    };

    const TPlatformCalls& calls_;
    std::multimap<std::wstring, TTarget> targets_;  // by path in upper case
};
