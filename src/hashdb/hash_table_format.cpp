#include "hashdb/hash_table_format.h"

#include <algorithm>
#include <cstring>

#include "store/table_file.h"
#include "support/text.h"

namespace {

constexpr auto kHashLength = static_cast<std::int32_t>(kPathHashLength);
constexpr std::array kFields{
    TFieldDescriptor{"HASH", TFieldType::Text, kHashLength},
    TFieldDescriptor{"Datum", TFieldType::DateTime, kDateTimeSize},
};

// Has-value byte, character count, characters; has-value byte, date.
constexpr std::size_t kHashStart = 1 + 4;
constexpr std::size_t kDatumStart = kHashStart + kPathHashLength;
constexpr std::size_t kRecordSize = kDatumStart + 1 + 8;
constexpr std::size_t kPieceSize = 1024 * 1024;

// The hash field holds ASCII, so characters are bytes unless the text is marked as UTF-8.
bool FitsHashField(std::string_view stored) {
    if (!stored.starts_with('\0')) {
        return stored.size() <= kPathHashLength;
    }
    const auto text = FromUtf8(stored.substr(1));
    return text && text->size() <= kPathHashLength;
}

void ReadRecord(TTableReader& reader, THashStore& store) {
    const std::size_t start = reader.Position();
    const auto stored = reader.ReadTextBytes(kHashLength);
    const auto hash = stored ? FromPathHashText(*stored) : std::nullopt;
    if (hash) {
        store.Append(*hash, reader.ReadDateTime().value_or(kNoDate));
        return;
    }
    if (stored && !FitsHashField(*stored)) {
        reader.ThrowDamagedAt(start);
    }
    reader.ReadDateTime();
    store.AppendForeign(reader.BytesSince(start), stored ? kHashStart : 0, stored ? stored->size() : 0);
}

// Gathers records and passes them on in pieces.
class TPieceWriter {
public:
    explicit TPieceWriter(const THashRecordSink& sink) : sink_(sink) {
        piece_.reserve(kPieceSize);
        TTableWriter(piece_).WriteHeader(kFields);
    }

    bool Write(const HashRecord& record) {
        const bool hasDate = record.Datum != kNoDate;
        const double date = hasDate ? ToFileTime(record.Datum) : 0.0;
        std::array<char, kRecordSize> bytes{1, static_cast<char>(kPathHashLength)};
        WritePathHashText(record.HASH, bytes.data() + kHashStart);
        bytes[kDatumStart] = static_cast<char>(hasDate);
        std::memcpy(bytes.data() + kDatumStart + 1, &date, sizeof date);
        return Write(std::string_view(bytes.data(), bytes.size()));
    }
    bool Write(std::string_view bytes) {
        if (piece_.size() + bytes.size() > kPieceSize && !Flush()) {
            return false;
        }
        piece_ += bytes;
        return true;
    }
    bool Flush() {
        const bool taken = sink_(piece_);
        piece_.clear();
        return taken;
    }

private:
    const THashRecordSink& sink_;
    std::string piece_;
};

// The start of a HASH, by which most records are ordered, and the number of the record.
struct TSortKey {
    std::uint64_t start;
    std::uint32_t record;
};

// Walks over the ordinary records in ascending order of HASH: merges the ones that came sorted with the
// others, which only it sorts. Records with the same HASH keep their order.
class TSortedRecords {
public:
    explicit TSortedRecords(const THashStore& store) : store_(store) {
        late_.reserve(store.OrdinaryCount() - store.SortedCount());
        for (std::size_t number = store.SortedCount(); number < store.OrdinaryCount(); ++number) {
            late_.push_back({StartOf(store.Ordinary(number).HASH), static_cast<std::uint32_t>(number)});
        }
        std::sort(late_.begin(), late_.end(), [&store](const TSortKey& left, const TSortKey& right) {
            if (left.start != right.start) {
                return left.start < right.start;
            }
            const auto order = store.Ordinary(left.record).HASH <=> store.Ordinary(right.record).HASH;
            return order != 0 ? order < 0 : left.record < right.record;
        });
    }

    // The next record; null behind the last.
    const HashRecord* Next() {
        const HashRecord* sorted =
            nextSorted_ < store_.SortedCount() ? &store_.Ordinary(nextSorted_) : nullptr;
        const HashRecord* late =
            nextLate_ < late_.size() ? &store_.Ordinary(late_[nextLate_].record) : nullptr;
        if (late && (!sorted || late->HASH < sorted->HASH)) {
            ++nextLate_;
            return late;
        }
        if (sorted) {
            ++nextSorted_;
        }
        return sorted;
    }

private:
    const THashStore& store_;
    std::vector<TSortKey> late_;
    std::size_t nextSorted_ = 0;
    std::size_t nextLate_ = 0;
};

bool WriteSorted(const THashStore& store, TPieceWriter& writer) {
    std::vector<std::uint32_t> foreign(store.ForeignCount());
    for (std::uint32_t number = 0; number < foreign.size(); ++number) {
        foreign[number] = number;
    }
    std::stable_sort(foreign.begin(), foreign.end(), [&store](std::uint32_t left, std::uint32_t right) {
        return store.Foreign(left).hash < store.Foreign(right).hash;
    });
    auto nextForeign = foreign.begin();
    TSortedRecords records(store);
    while (const HashRecord* record = records.Next()) {
        while (nextForeign != foreign.end() &&
               store.Foreign(*nextForeign).hash < ToPathHashText(record->HASH)) {
            if (!writer.Write(store.Foreign(*nextForeign++).bytes)) {
                return false;
            }
        }
        if (!writer.Write(*record)) {
            return false;
        }
    }
    return std::all_of(nextForeign, foreign.end(), [&store, &writer](std::uint32_t number) {
        return writer.Write(store.Foreign(number).bytes);
    });
}

bool WriteUnsorted(const THashStore& store, TPieceWriter& writer) {
    std::size_t nextForeign = 0;
    for (std::size_t number = 0; number <= store.OrdinaryCount(); ++number) {
        for (; nextForeign < store.ForeignCount() && store.Foreign(nextForeign).place == number;
             ++nextForeign) {
            if (!writer.Write(store.Foreign(nextForeign).bytes)) {
                return false;
            }
        }
        if (number < store.OrdinaryCount() && !writer.Write(store.Ordinary(number))) {
            return false;
        }
    }
    return true;
}

}  // namespace

THashStore ReadHashRecords(std::string_view bytes) {
    TTableReader reader(bytes, kFields);
    THashStore store((bytes.size() - reader.Position()) / kRecordSize);
    while (!reader.AtEnd()) {
        ReadRecord(reader, store);
    }
    return store;
}

bool WriteHashRecords(const THashStore& store, bool sorted, const THashRecordSink& sink) {
    TPieceWriter writer(sink);
    const bool written = sorted ? WriteSorted(store, writer) : WriteUnsorted(store, writer);
    return written && writer.Flush();
}
