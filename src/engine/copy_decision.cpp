#include "engine/copy_decision.h"

#include <algorithm>

namespace {

// What destinations keep of a time, in milliseconds: old disks whole or even seconds, memory cards
// hundredths.
constexpr std::int64_t kGrains[] = {10, 1000, 2000};
// Time zones differ by quarters of an hour, in milliseconds, and by little more than a day.
constexpr std::int64_t kZoneStep = 900'000;
constexpr std::int64_t kLargestZoneDifference = 26 * 4 * kZoneStep;

std::int64_t RoundedDown(std::int64_t value, std::int64_t grain) {
    const std::int64_t rest = value % grain;
    return value - (rest < 0 ? rest + grain : rest);
}

// Rounded up is what this program writes itself where it sees that a destination rounds.
bool IsRounded(TDateTime source, TDateTime copy) {
    return std::ranges::any_of(kGrains, [&](std::int64_t grain) {
        const std::int64_t below = RoundedDown(source.milliseconds, grain);
        return below != source.milliseconds &&
               (copy.milliseconds == below || copy.milliseconds == below + grain);
    });
}

bool IsOlderByTimeZone(TDateTime recorded, TDateTime local) {
    const std::int64_t difference = local.milliseconds - recorded.milliseconds;
    return difference > 0 && difference <= kLargestZoneDifference && difference % kZoneStep == 0;
}

}  // namespace

TCopyDecision DecideCopy(const TFileState& source, TDateTime local, std::optional<TDateTime> recorded,
                         const std::optional<TFileState>& copy) {
    if (!copy) {
        return TCopyDecision::Copy;
    }
    const bool recordIsOlder = recorded && *recorded < local;
    if (copy->written == source.written) {
        if (copy->size != source.size) {
            return TCopyDecision::Copy;
        }
        return recordIsOlder ? TCopyDecision::Record : TCopyDecision::Leave;
    }
    if (copy->size == source.size && IsRounded(source.written, copy->written)) {
        if (!recordIsOlder) {
            return TCopyDecision::Leave;
        }
        return IsOlderByTimeZone(*recorded, local) ? TCopyDecision::Record : TCopyDecision::Copy;
    }
    const bool mustCopy = recordIsOlder ? local > TDateTime{} : source.written > copy->written;
    return mustCopy ? TCopyDecision::Copy : TCopyDecision::Leave;
}
