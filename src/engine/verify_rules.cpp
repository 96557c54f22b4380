#include "engine/verify_rules.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned kParts = 100;

unsigned PartOf(const TPathDigest& path) {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < sizeof number; ++index) {
        number = number << 8 | path.bytes[index];
    }
    return number % kParts;
}

}  // namespace

bool TVerifySlice::Holds(const TPathDigest& path) const {
    return (PartOf(path) + kParts - first % kParts) % kParts < percent;
}

TVerifyStep NextVerifyStep(const TFileState& source, TDateTime local, std::optional<TDateTime> recorded,
                           const std::optional<TFileState>& copy, bool recordsAreKnown) {
    if (!copy) {
        return recorded || !recordsAreKnown ? TVerifyStep::Missing : TVerifyStep::ToBeCopied;
    }
    // A run would copy it anew, too, but not because it is newer.
    const bool wasCutOff = copy->written == source.written && copy->size != source.size;
    if (!wasCutOff && DecideCopy(source, local, recorded, copy) == TCopyDecision::Copy) {
        return TVerifyStep::ToBeCopied;
    }
    return copy->size == source.size ? TVerifyStep::ReadBoth : TVerifyStep::WrongSize;
}

TStreamComparison CompareStreams(const TBlockReader& source, std::span<std::byte> sourceBlock,
                                 const TBlockReader& copy, std::span<std::byte> copyBlock,
                                 const std::function<bool(std::size_t bytes)>& goOn) {
    using TEnd = TStreamComparison::TEnd;
    TStreamComparison result;
    for (;;) {
        std::size_t ofSource = 0;
        std::size_t ofCopy = 0;
        if (const TErrorCode error = source(sourceBlock, ofSource)) {
            return {TEnd::SourceFailed, error, result.same};
        }
        if (const TErrorCode error = copy(copyBlock, ofCopy)) {
            return {TEnd::CopyFailed, error, result.same};
        }
        const std::size_t both = std::min(ofSource, ofCopy);
        if (std::memcmp(sourceBlock.data(), copyBlock.data(), both) != 0) {
            const auto difference = std::ranges::mismatch(sourceBlock.first(both), copyBlock.first(both));
            const auto at = static_cast<std::uint64_t>(difference.in1 - sourceBlock.begin());
            return {TEnd::Different, 0, result.same + at};
        }
        result.same += both;
        if (ofSource != ofCopy) {
            return {TEnd::Different, 0, result.same};
        }
        if (!goOn(both)) {
            return {TEnd::Stopped, 0, result.same};
        }
        if (both < sourceBlock.size()) {
            return result;
        }
    }
}
