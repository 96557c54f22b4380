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

TErrorCode TStoredHashTable::Save(const TPlatformCalls& calls, const TElsewhere& elsewhere) {
    if (!mayBeSaved_ || !table_.IsOpen() || !(table_.Modified() || fileIsMissing_)) {
        return 0;
    }
    const std::shared_ptr<const THashSnapshot> records = table_.Snapshot();
    const TErrorCode error = elsewhere([&calls, path = path_, records, sorted = table_.HasIndex()] {
        return SaveHashTable(calls, path, *records, sorted);
    });
    if (error == 0) {
        fileIsMissing_ = false;
        // Unless more was recorded meanwhile.
        if (&records->Store() == &table_.Store()) {
            table_.SetModified(false);
        }
    }
    return error;
}
