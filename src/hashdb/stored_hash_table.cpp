#include "hashdb/stored_hash_table.h"

#include <utility>

#include "hashdb/hash_table_file.h"

void TStoredHashTable::Loaded(std::wstring path, THashTable* loaded) {
    path_ = std::move(path);
    if (loaded != nullptr) {
        table_.TakeOver(*loaded);
    }
    if (!table_.HasIndex()) {
        table_.AddIndex();
    }
    table_.Open();
    fileIsMissing_ = loaded == nullptr;
    mayBeSaved_ = true;
}

void TStoredHashTable::Rebuilt(std::wstring path) {
    path_ = std::move(path);
    table_.SetModified(true);
    mayBeSaved_ = true;
}

bool TStoredHashTable::IsCurrent() const {
    return mayBeSaved_ && table_.IsOpen() && !table_.Modified() && !fileIsMissing_;
}

TErrorCode TStoredHashTable::Save(const TPlatformCalls& calls) {
    if (!mayBeSaved_ || !table_.IsOpen() || !(table_.Modified() || fileIsMissing_)) {
        return 0;
    }
    const TErrorCode error = SaveHashTable(calls, path_, table_);
    if (error == 0) {
        fileIsMissing_ = false;
    }
    return error;
}
