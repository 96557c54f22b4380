// What a run shall do.
#pragma once

#include <optional>

// A check of the backup.
struct TCheckOrder {
    unsigned percent = 100;  // of the files, 1 to 100; less than 100: others each time
    bool repair = false;     // bad copies are made anew
};

// A run copies, or checks, or does one after the other.
struct TRunOrder {
    bool copy = true;
    std::optional<TCheckOrder> check = std::nullopt;

    // Whether the destination is only read.
    bool ChangesNothing() const { return !copy && !(check && check->repair); }
};
