#include "hashdb/hash_store.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <stdexcept>

namespace {

// Three quarters of as many slots as a 32-bit number can tell apart.
constexpr std::size_t kMostRecords = std::size_t{3} << 30;
constexpr unsigned kFewestSlotBits = 4;

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

void THashStore::Reserve(std::size_t recordCount) {
    if (recordCount > kMostRecords) {
        throw std::runtime_error("Die Tabelle hat zu viele Einträge.");
    }
    unsigned bits = kFewestSlotBits;
    while (3 * (std::uint64_t{1} << bits) < 4 * (recordCount + 1)) {
        ++bits;
    }
    if (bits > slotBits_) {
        SetSlotBits(bits);
    }
}

// Slots are ordered by their upper bits, so doubling walks through old and new ones from front to back and
// reads no record.
void THashStore::SetSlotBits(unsigned slotBits) {
    const std::vector<TSlot> old = std::move(slots_);
    slotBits_ = slotBits;
    slots_.assign(std::size_t{1} << slotBits, {});
    for (const TSlot& slot : old) {
        if (slot.record != 0) {
            std::size_t place = HomeOf(slot.mixed);
            while (slots_[place].record != 0) {
                place = (place + 1) & (slots_.size() - 1);
            }
            slots_[place] = slot;
        }
    }
}

std::size_t THashStore::FindSlot(const TPathDigest& hash, std::uint32_t mixed) const {
    std::size_t place = HomeOf(mixed);
    for (;; place = (place + 1) & (slots_.size() - 1)) {
        const TSlot& slot = slots_[place];
        if (slot.record == 0 || (slot.mixed == mixed && Ordinary(slot.record - 1).HASH == hash)) {
            return place;
        }
    }
}

std::optional<TDateTime> THashStore::Find(const TPathDigest& hash) const {
    if (slots_.empty()) {
        return std::nullopt;
    }
    const TSlot& slot = slots_[FindSlot(hash, mix_(hash))];
    if (slot.record == 0) {
        return std::nullopt;
    }
    const TDateTime date = Ordinary(slot.record - 1).Datum;
    return date == kNoDate ? TDateTime{} : date;
}

void THashStore::Append(const TPathDigest& hash, TDateTime date) {
    if (NeedsMoreSlots()) {
        SetSlotBits(std::max(slotBits_ + 1, kFewestSlotBits));
    }
    const std::uint32_t mixed = mix_(hash);
    const std::size_t place = FindSlot(hash, mixed);
    if (slots_[place].record == 0) {
        AppendAt(place, mixed, hash, date);
    } else {
        AppendRecord(hash, date);
    }
}

void THashStore::Record(const TPathDigest& hash, TDateTime date) {
    if (NeedsMoreSlots()) {
        SetSlotBits(std::max(slotBits_ + 1, kFewestSlotBits));
    }
    const std::uint32_t mixed = mix_(hash);
    const std::size_t place = FindSlot(hash, mixed);
    if (slots_[place].record == 0) {
        AppendAt(place, mixed, hash, date);
    } else {
        Ordinary(slots_[place].record - 1).Datum = date;
    }
}

void THashStore::AppendAt(std::size_t place, std::uint32_t mixed, const TPathDigest& hash, TDateTime date) {
    AppendRecord(hash, date);
    slots_[place] = {mixed, static_cast<std::uint32_t>(count_)};
    ++usedSlots_;
}

void THashStore::AppendRecord(const TPathDigest& hash, TDateTime date) {
    if (count_ == kMostRecords) {
        throw std::runtime_error("Die Tabelle hat zu viele Einträge.");
    }
    if (count_ % kRecordsPerBlock == 0) {
        blocks_.emplace_back().reserve(kRecordsPerBlock);
    }
    if (sortedCount_ == count_ && (count_ == 0 || Ordinary(count_ - 1).HASH <= hash)) {
        ++sortedCount_;
    }
    blocks_.back().push_back({hash, date});
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
