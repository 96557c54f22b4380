#include "hashdb/hash_store.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

#include "support/problem.h"

namespace {

// Three quarters of as many slots as a 32-bit number can tell apart.
constexpr std::size_t kMostRecords = std::size_t{3} << 30;
constexpr std::size_t kFewestSlots = 16;
constexpr std::size_t kLongBucket = 16;
constexpr std::uint64_t kMostBuckets = std::uint64_t{1} << 31;
constexpr std::size_t kFarthestOffset = 255;

std::array<std::uint64_t, 9> DrawFactors() {
    std::random_device random;
    std::array<std::uint64_t, 9> factors{};
    for (std::uint64_t& factor : factors) {
        factor = std::uint64_t{random()} << 32 | random();
    }
    return factors;
}

}  // namespace

TDigestMixer::TDigestMixer() {
    static const auto factors = DrawFactors();
    factors_ = factors;
}

// Multilinear hashing: for random factors two different digests agree in the upper half with a chance of
// 2^-32, whoever chose them. The rest spreads digests that follow a pattern.
std::uint32_t TDigestMixer::operator()(const TPathDigest& digest) const {
    std::array<std::uint32_t, 8> words;
    std::memcpy(words.data(), digest.bytes.data(), sizeof words);
    std::uint64_t sum = factors_[8];
    for (std::size_t index = 0; index < words.size(); ++index) {
        sum += factors_[index] * words[index];
    }
    auto mixed = static_cast<std::uint32_t>(sum >> 32);
    mixed ^= mixed >> 16;
    mixed *= 0x7FEB352D;
    mixed ^= mixed >> 15;
    return mixed;
}

// Twice as many buckets as records, so that the first record of a bucket is mostly the one looked for: a
// processor that guesses so goes on to the next look-up while it waits for the memory.
THashStore::THashStore(std::size_t expectedRecords)
    : takesSortedOnes_(expectedRecords > 0),
      directory_(std::make_shared<TDirectory>()),
      buckets_(std::min(2 * std::uint64_t{expectedRecords}, kMostBuckets)),
      slots_(kFewestSlots) {
    if (takesSortedOnes_) {
        directory_->groups.reserve(static_cast<std::size_t>(buckets_ / kBucketsPerGroup + 1));
        directory_->offsets.reserve(static_cast<std::size_t>(buckets_));
    }
}

THashStore THashStore::Successor() const {
    THashStore next(*this);
    for (TBlock& block : next.blocks_) {
        block.isOwn = false;
    }
    // The directory is shared, too, and not to grow any more.
    next.takesSortedOnes_ = false;
    return next;
}

HashRecord& THashStore::OrdinaryToChange(std::size_t number) {
    TBlock& block = blocks_[number / kRecordsPerBlock];
    if (!block.isOwn) {
        auto copy = std::make_shared<HashRecord[]>(kRecordsPerBlock);
        std::copy_n(block.records.get(), kRecordsPerBlock, copy.get());
        block = {std::move(copy), true};
    }
    return block.records[number % kRecordsPerBlock];
}

std::uint64_t THashStore::BucketOf(const TPathDigest& hash) const {
    return (StartOf(hash) >> 32) * buckets_ >> 32;
}

bool THashStore::ContinuesSortedOnes(const TPathDigest& hash) const {
    return takesSortedOnes_ && sortedCount_ == count_ && (count_ == 0 || Ordinary(count_ - 1).HASH <= hash);
}

void THashStore::AppendSorted(const TPathDigest& hash, TDateTime date) {
    for (const std::uint64_t bucket = BucketOf(hash); filledBuckets_ <= bucket; ++filledBuckets_) {
        if (filledBuckets_ % kBucketsPerGroup == 0) {
            directory_->groups.push_back(static_cast<std::uint32_t>(count_));
        }
        directory_->offsets.push_back(
            static_cast<std::uint8_t>(std::min(count_ - directory_->groups.back(), kFarthestOffset)));
    }
    AppendRecord(hash, date);
    ++sortedCount_;
}

std::size_t THashStore::FirstSortedNotBefore(const TPathDigest& hash, std::size_t first,
                                             std::size_t last) const {
    while (first < last) {
        const std::size_t middle = (first + last) / 2;
        if (Ordinary(middle).HASH < hash) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

// Short, and what is seldom needed kept out of it: the fewer instructions a look-up has, the more of them the
// processor has under way at once.
inline std::size_t THashStore::FindSorted(const TPathDigest& hash) const {
    const std::uint64_t bucket = BucketOf(hash);
    if (bucket >= filledBuckets_) {
        return kNoRecord;
    }
    const std::size_t number = directory_->groups[static_cast<std::size_t>(bucket / kBucketsPerGroup)] +
                               directory_->offsets[static_cast<std::size_t>(bucket)];
    return Ordinary(number).HASH == hash ? number : FindSortedFrom(number, hash);
}

std::size_t THashStore::FindSortedFrom(std::size_t number, const TPathDigest& hash) const {
    const std::uint64_t start = StartOf(hash);
    const std::size_t longBucket = std::min(number + kLongBucket, sortedCount_);
    for (; number < longBucket; ++number) {
        const TPathDigest& found = Ordinary(number).HASH;
        const std::uint64_t itsStart = StartOf(found);
        if (itsStart == start && found == hash) {
            return number;
        }
        if (itsStart > start) {
            return kNoRecord;
        }
    }
    // Only a file made for it fills a bucket so; it must not make every look-up slow.
    number = FirstSortedNotBefore(hash, number, sortedCount_);
    return number < sortedCount_ && Ordinary(number).HASH == hash ? number : kNoRecord;
}

std::size_t THashStore::FindSlot(const TPathDigest& hash, std::uint32_t mixed) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t place = mixed & mask;; place = (place + 1) & mask) {
        const TSlot& slot = slots_[place];
        if (slot.record == 0 || (slot.mixed == mixed && Ordinary(slot.record - 1).HASH == hash)) {
            return place;
        }
    }
}

std::size_t THashStore::FindSlotted(const TPathDigest& hash) const {
    const TSlot& slot = slots_[FindSlot(hash, mix_(hash))];
    return slot.record == 0 ? kNoRecord : slot.record - 1;
}

std::optional<TDateTime> THashStore::Find(const TPathDigest& hash) const {
    std::size_t number = FindSorted(hash);
    if (number == kNoRecord) {
        number = FindSlotted(hash);
        if (number == kNoRecord) {
            return std::nullopt;
        }
    }
    const TDateTime date = Ordinary(number).Datum;
    return date == kNoDate ? TDateTime{} : date;
}

void THashStore::Append(const TPathDigest& hash, TDateTime date) {
    if (ContinuesSortedOnes(hash)) {
        AppendSorted(hash, date);
    } else {
        AppendTo(SlotFor(hash), hash, date);
    }
}

void THashStore::Record(const TPathDigest& hash, TDateTime date) {
    if (const std::size_t number = FindSorted(hash); number != kNoRecord) {
        OrdinaryToChange(number).Datum = date;
    } else if (TSlot& slot = SlotFor(hash); slot.record != 0) {
        OrdinaryToChange(slot.record - 1).Datum = date;
    } else {
        AppendTo(slot, hash, date);
    }
}

THashStore::TSlot& THashStore::SlotFor(const TPathDigest& hash) {
    if (4 * (count_ - sortedCount_ + 1) > 3 * slots_.size()) {
        DoubleSlots();
    }
    const std::uint32_t mixed = mix_(hash);
    TSlot& slot = slots_[FindSlot(hash, mixed)];
    slot.mixed = mixed;
    return slot;
}

void THashStore::AppendTo(TSlot& slot, const TPathDigest& hash, TDateTime date) {
    AppendRecord(hash, date);
    if (slot.record == 0) {
        slot.record = static_cast<std::uint32_t>(count_);
    }
}

// Reads no record.
void THashStore::DoubleSlots() {
    const auto old = std::exchange(slots_, std::vector<TSlot>(2 * slots_.size()));
    const std::size_t mask = slots_.size() - 1;
    for (const TSlot& slot : old) {
        if (slot.record != 0) {
            std::size_t place = slot.mixed & mask;
            while (slots_[place].record != 0) {
                place = (place + 1) & mask;
            }
            slots_[place] = slot;
        }
    }
}

void THashStore::AppendRecord(const TPathDigest& hash, TDateTime date) {
    if (count_ == kMostRecords) {
        throw EProblem({.what = TProblemKind::TooManyRecords});
    }
    if (count_ % kRecordsPerBlock == 0) {
        blocks_.push_back({std::make_shared<HashRecord[]>(kRecordsPerBlock), true});
    }
    OrdinaryToChange(count_) = {hash, date};
    ++count_;
}

void THashStore::AppendForeign(std::string_view bytes, std::size_t hashStart, std::size_t hashLength) {
    foreign_.push_back({foreignBytes_.size(), static_cast<std::uint32_t>(count_),
                        static_cast<std::uint16_t>(hashStart), static_cast<std::uint16_t>(hashLength)});
    foreignBytes_ += bytes;
}

TForeignRecord THashStore::Foreign(std::size_t number) const {
    const TForeignPlace& found = foreign_[number];
    const std::size_t end = number + 1 < foreign_.size() ? foreign_[number + 1].start : foreignBytes_.size();
    const auto bytes = std::string_view(foreignBytes_).substr(found.start, end - found.start);
    return {found.place, bytes, bytes.substr(found.hashStart, found.hashLength)};
}
