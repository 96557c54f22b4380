// The hash table together with the file that it belongs to.
#pragma once

#include <functional>
#include <string>

#include "hashdb/hash_table.h"
#include "support/error_code.h"
#include "support/platform_calls.h"

// Knows whether the table in memory may be written to its file: a file that could not be read is never
// written over. Belongs to the window's thread.
class TStoredHashTable {
public:
    explicit TStoredHashTable(THashTable& table) : table_(table) {}

    const std::wstring& Path() const { return path_; }

    // From here on the table belongs to a file that was read: `loaded` is what was in it, nothing when there
    // is no such file. The table then keeps what it holds.
    void Loaded(std::wstring path, THashTable* loaded);
    // From here on it belongs to a file whose content it replaces, whatever that is.
    void Rebuilt(std::wstring path);

    // Whether the file holds what the table does.
    bool IsCurrent() const;

    // Does something elsewhere, waits for it, and answers what it answered; one after the other, also when
    // the wait lets in another call.
    using TElsewhere = std::function<TErrorCode(std::function<TErrorCode()> work)>;

    // Writes the table if it has something to say that the file does not.
    [[nodiscard]] TErrorCode Save(const TPlatformCalls& calls, const TElsewhere& elsewhere);

private:
    THashTable& table_;
    std::wstring path_;
    bool mayBeSaved_ = false;
    bool fileIsMissing_ = false;
};
