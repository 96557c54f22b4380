// Whether a file must be copied.
#pragma once

#include <optional>

#include "support/date_time.h"

// The decision for a file whose copy exists. `source` is the source's last-write time, `recorded` the date of
// its hash record if there is one, `destination` asks for the last-write time of the copy and is called only
// when the answer depends on it. A file without a copy is always copied.
template <typename DestinationTime>
bool MustCopyAgain(TDateTime source, std::optional<TDateTime> recorded, DestinationTime destination) {
    if (recorded && *recorded < source) {
        return source > TDateTime{};
    }
    return source > destination();
}
