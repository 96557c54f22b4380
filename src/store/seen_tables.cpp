#include "store/seen_tables.h"

#include <cwchar>

#include "store/ini_file.h"
#include "support/case_folding.h"
#include "support/file_access.h"
#include "support/path_hash.h"
#include "support/system_code_page.h"

namespace {

constexpr std::wstring_view kTables = L"TABLES";
constexpr std::wstring_view kChecks = L"CHECKS";

// The file, opened to look up or change what a section says of one table.
class TSeenTables {
public:
    TSeenTables(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                const std::wstring& tableFile, std::wstring_view section)
        : calls_(calls),
          section_(section),
          path_(SeenTablesFile(configurationFolder)),
          key_(PathHash(FoldedCase(tableFile))) {
        readError_ = ReadWholeFile(calls_, path_, bytes_);
        if (readError_ != ERROR_SUCCESS) {
            bytes_.clear();
        }
    }

    std::uint64_t Number() const {
        const auto text = TIniFile(bytes_, codePage_).Text(section_, key_);
        return text ? std::wcstoull(text->c_str(), nullptr, 10) : 0;
    }

    // `note` is for people who look into the file.
    [[nodiscard]] TErrorCode Store(std::uint64_t number, const std::wstring& note) const {
        if (readError_ != ERROR_SUCCESS && !IsMissing(readError_)) {
            return readError_;
        }
        TIniFile ini(bytes_, codePage_);
        ini.SetText(section_, key_, std::to_wstring(number) + L" " + note);
        const std::string changed = ini.Bytes(codePage_);
        return changed == bytes_
                   ? TErrorCode{ERROR_SUCCESS}
                   : ReplaceWholeFile(calls_, path_, [&](const TByteSink& sink) { return sink(changed); });
    }

private:
    const TPlatformCalls& calls_;
    const std::wstring_view section_;
    const std::wstring path_;
    const std::wstring key_;
    const TSystemCodePage codePage_;
    std::string bytes_;
    TErrorCode readError_ = ERROR_SUCCESS;
};

}  // namespace

std::wstring SeenTablesFile(const std::wstring& configurationFolder) {
    return configurationFolder + L"\\NASSeen.ini";
}

void RememberTable(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                   const std::wstring& tableFile, std::uint64_t records) {
    static_cast<void>(TSeenTables(calls, configurationFolder, tableFile, kTables).Store(records, tableFile));
}

std::uint64_t TakeSeenRecords(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                              const std::wstring& tableFile) {
    const TSeenTables seen(calls, configurationFolder, tableFile, kTables);
    const std::uint64_t records = seen.Number();
    if (records != 0) {
        static_cast<void>(seen.Store(0, tableFile));
    }
    return records;
}

unsigned VerifiedUpTo(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                      const std::wstring& tableFile) {
    return static_cast<unsigned>(TSeenTables(calls, configurationFolder, tableFile, kChecks).Number() % 100);
}

TErrorCode RememberVerified(const TPlatformCalls& calls, const std::wstring& configurationFolder,
                            const std::wstring& tableFile, unsigned next) {
    return TSeenTables(calls, configurationFolder, tableFile, kChecks).Store(next, tableFile);
}
