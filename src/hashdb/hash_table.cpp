#include "hashdb/hash_table.h"

#include <utility>

THashTable::THashTable() : store_(std::make_shared<THashStore>()) {}
THashTable::~THashTable() = default;

void THashTable::Close() {
    Assign(THashStore());
    isOpen_ = false;
}

void THashTable::Assign(THashStore store) {
    store_ = std::make_shared<THashStore>(std::move(store));
    storeIsShared_ = false;
    isOpen_ = true;
    modified_ = false;
}

void THashTable::TakeOver(THashTable& other) {
    Assign(std::move(*other.store_));
    other.Close();
}

void THashTable::RecordCopiedFile(const TPathDigest& hash, TDateTime date) {
    StoreToChange().Record(hash, date);
    modified_ = true;
}

void THashTable::Append(const TPathDigest& hash, TDateTime date) {
    StoreToChange().Append(hash, date);
    modified_ = true;
}

std::shared_ptr<const THashSnapshot> THashTable::Snapshot() const {
    storeIsShared_ = true;
    return std::make_shared<const THashSnapshot>(store_);
}

THashStore& THashTable::StoreToChange() {
    if (storeIsShared_) {
        store_ = std::make_shared<THashStore>(store_->Successor());
        storeIsShared_ = false;
    }
    return *store_;
}
