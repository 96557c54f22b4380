// Whether a file must be copied.
#pragma once

#include <cstdint>
#include <optional>

#include "support/date_time.h"

// What decides about a file: its last-write time in UTC (UniversalDateTime) and its size in bytes.
struct TFileState {
    TDateTime written;
    std::int64_t size = 0;

    friend bool operator==(const TFileState&, const TFileState&) = default;
};

enum class TCopyDecision {
    Copy,
    Leave,
    Record,  // the copy is right, its hash record is not: it gets the source's date
};

// clang-format off
// The decision for a file. `copy` is what the destination holds of it, `recorded` the date of its hash
// record, `local` the source's last-write time in local time, as records have it.
//
// | the copy                                    | the record              | decision                         |
// |---------------------------------------------|-------------------------|----------------------------------|
// | none                                        | any                     | Copy                             |
// | the source's date, another size             | any                     | Copy: one of them was cut off,   |
// |                                             |                         | or changed without its date      |
// | the source's date and size                  | older                   | Record: the time zone moved      |
// |                                             | not older, none         | Leave                            |
// | the source's date as a destination rounds   | older by a time zone    | Record                           |
// | it, the source's size                       | older otherwise         | Copy                             |
// |                                             | not older, none         | Leave                            |
// | anything else                               | older                   | Copy, if the source has a date   |
// |                                             | not older, none         | Copy, if the source is newer     |
// clang-format on
TCopyDecision DecideCopy(const TFileState& source, TDateTime local, std::optional<TDateTime> recorded,
                         const std::optional<TFileState>& copy);
