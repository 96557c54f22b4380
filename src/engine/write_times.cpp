#include "engine/write_times.h"

#include <optional>

namespace {

// What file systems and file servers keep, from 100 ns to the two seconds of FAT.
constexpr std::int64_t kUnits[] = {1, 10, 10'000, 100'000, 10'000'000, 20'000'000};
constexpr std::int64_t kCoarsest = 20'000'000;

std::int64_t ToTicks(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 |
                                     time.dwLowDateTime);
}

FILETIME ToFileTime(std::int64_t ticks) {
    const auto bits = static_cast<std::uint64_t>(ticks);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

// The system has no dates that high bits stand for: those stay as they are.
std::int64_t RoundedUp(std::int64_t ticks, std::int64_t unit) {
    constexpr std::int64_t kLastDate = std::int64_t{1} << 62;
    return ticks <= 0 || ticks > kLastDate ? ticks : (ticks + unit - 1) / unit * unit;
}

// One copy that is being dated.
class TDating {
public:
    TDating(const TPlatformCalls& calls, HANDLE file, const TFileTimes& times)
        : calls_(calls), file_(file), times_(times) {}

    bool Set(std::int64_t lastWrite) const {
        const FILETIME time = ToFileTime(lastWrite);
        return calls_.SetFileTime(file_, &times_.creation, &times_.lastAccess, &time) != FALSE;
    }

    // What it was set to as the destination has it; nothing when that cannot be told.
    std::optional<std::int64_t> SetAndRead(std::int64_t lastWrite) const {
        FILETIME kept{};
        return Set(lastWrite) && calls_.GetFileTime(file_, nullptr, nullptr, &kept)
                   ? std::optional(ToTicks(kept))
                   : std::nullopt;
    }

private:
    const TPlatformCalls& calls_;
    HANDLE file_;
    const TFileTimes& times_;
};

std::int64_t CoarsestUnitOf(std::int64_t ticks) {
    std::int64_t coarsest = 1;
    for (const std::int64_t unit : kUnits) {
        coarsest = ticks % unit == 0 ? unit : coarsest;
    }
    return coarsest;
}

// The unit to which the destination rounded `wanted` to `kept`, tried by setting the time rounded up to it.
// The time that was set is then in `wanted`. Nothing when what it does is no rounding.
std::optional<std::int64_t> FindUnit(const TDating& dating, std::int64_t& wanted, std::int64_t kept) {
    const std::int64_t change = kept < wanted ? wanted - kept : kept - wanted;
    for (const std::int64_t unit : kUnits) {
        const std::int64_t roundedUp = RoundedUp(wanted, unit);
        if (change < unit && kept % unit == 0 && dating.SetAndRead(roundedUp) == roundedUp) {
            wanted = roundedUp;
            return unit;
        }
    }
    return std::nullopt;
}

}  // namespace

FILETIME TWriteTimes::Set(const TPlatformCalls& calls, HANDLE file, const TFileTimes& times) {
    const TDating dating(calls, file, times);
    std::int64_t wanted = ToTicks(times.lastWrite);
    const std::int64_t unit = unit_;
    if (unit > 0 || (unit < 0 && wanted % unit == 0)) {
        wanted = RoundedUp(wanted, unit > 0 ? unit : 1);
        dating.Set(wanted);
        return ToFileTime(wanted);
    }
    const auto kept = dating.SetAndRead(wanted);
    if (!kept) {
        return times.lastWrite;
    }
    if (*kept == wanted) {
        // That is all that a whole second tells: finer ones may be rounded nevertheless.
        const std::int64_t coarsest = CoarsestUnitOf(wanted);
        unit_ = coarsest == 1 ? 1 : -coarsest;
        return times.lastWrite;
    }
    if (const auto found = FindUnit(dating, wanted, *kept)) {
        unit_ = *found;
        return ToFileTime(wanted);
    }
    // Not a matter of rounding: nothing that could be done about it for later copies either.
    unit_ = 1;
    return dating.SetAndRead(wanted) ? ToFileTime(*kept) : times.lastWrite;
}
