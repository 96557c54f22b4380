// The scan, which lists each destination folder once, decides as one that asks for every file.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>
#include <set>

#include "engine/copy_decision.h"
#include "engine/memory_files.h"
#include "engine/scan_folders.h"
#include "support/path_hash.h"

namespace {

constexpr unsigned kTrees = 10000;
const std::wstring kSource = L"C:\\Daten";
const std::wstring kBackup = L"N:\\PC\\drive_C\\Daten";

// A source tree, what the backup holds of it, and the records of the hash table.
class TRandomTree {
public:
    explicit TRandomTree(unsigned seed) : random_(seed) {
        if (OneIn(5)) {
            files.MakeCaseSensitive(kSource);
        }
        if (OneIn(5)) {
            files.MakeCaseSensitive(kBackup);
        }
        files.Add(kSource, FILE_ATTRIBUTE_DIRECTORY);
        AddFolder(L"", 2);
    }

    TMemoryFiles files;
    std::map<std::wstring, TDateTime> records;
    std::set<std::wstring> broken;  // folders whose copy cannot be listed to its end
    const TLocalTimeRule localTime;

private:
    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    bool OneIn(unsigned chance) { return Below(chance) == 0; }

    std::wstring Name() {
        constexpr std::array kNames{L"brief.doc", L"ärger.txt", L"straße", L"x.jpg", L"λόγος.txt", L"ab"};
        return Respelled(kNames[Below(kNames.size())]);
    }
    std::wstring Respelled(std::wstring name) {
        for (wchar_t& letter : name) {
            letter = OneIn(4) ? UpperCaseOf(letter) : letter;
        }
        return name;
    }

    // Around a moment in summer or winter, so that ties, neighbours, and hours that a daylight-saving rule
    // moves are all frequent. 0 is a date that means none.
    FILETIME Time() {
        constexpr std::array<std::int64_t, 7> kSteps{0, 1, 9'999, 10'000, 10'000'000, 36'000'000'000, -1};
        if (OneIn(20)) {
            return {};
        }
        const std::int64_t moment =
            (OneIn(2) ? 133'600'000'000'000'000 : 133'480'000'000'000'000) + kSteps[Below(kSteps.size())];
        return {static_cast<DWORD>(moment), static_cast<DWORD>(moment >> 32)};
    }

    // Whether `inside` (with its leading "\") is a folder of the source, with what lies in it.
    void AddFolder(const std::wstring& inside, int depth) {
        if (OneIn(8)) {
            files.BreakListing(kBackup + inside, Below(4));
            broken.insert(inside);
        }
        if (!OneIn(10)) {
            files.Add(kBackup + inside, OneIn(20) ? FILE_ATTRIBUTE_ARCHIVE : FILE_ATTRIBUTE_DIRECTORY);
        }
        for (unsigned count = Below(6); count > 0; --count) {
            AddFile(inside + L"\\" + Name(), inside);
        }
        for (unsigned count = depth > 0 ? Below(3) : 0; count > 0; --count) {
            const std::wstring folder = inside + L"\\" + (OneIn(10) ? L"." : L"") + Name();
            // Of folders that differ only in case there is another test.
            if (files.Find(kSource + folder) == nullptr && folders_.insert(FoldedCase(folder)).second) {
                files.Add(kSource + folder,
                          FILE_ATTRIBUTE_DIRECTORY | (OneIn(8) ? FILE_ATTRIBUTE_HIDDEN : 0U));
                AddFolder(folder, depth - 1);
            }
        }
    }

    void AddFile(const std::wstring& file, const std::wstring& inside) {
        files.Add(kSource + file, OneIn(6) ? FILE_ATTRIBUTE_HIDDEN : FILE_ATTRIBUTE_ARCHIVE, Time(),
                  Below(2));
        const TMemoryFiles::TNode* folder = files.Find(kBackup + inside);
        if (folder != nullptr && (folder->attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !OneIn(4)) {
            const std::wstring copy =
                OneIn(3) ? kBackup + inside + L"\\" + Respelled(file.substr(inside.size() + 1))
                         : kBackup + file;
            files.Add(copy, OneIn(8) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE, Time(), Below(2));
        }
        if (OneIn(2)) {
            records[kSource + file] = localTime.ToLocal(Time());
        }
    }

    std::mt19937 random_;
    std::set<std::wstring> folders_;
};

// One question for every file, and the rules one after the other.
class TPlainScan {
public:
    explicit TPlainScan(const TRandomTree& tree) : tree_(tree) { ScanFolder(L""); }

    // As the scan sends them: folder by folder, first what is to be copied, then what collides.
    std::vector<std::wstring> sent;

private:
    using TNode = TMemoryFiles::TNode;

    void ScanFolder(const std::wstring& inside) {
        names_.clear();
        std::vector<std::wstring> collisions;
        for (const TNode& file : tree_.files.Children(kSource + inside)) {
            if (!IsFolder(file)) {
                const std::wstring path = kSource + inside + L"\\" + file.name;
                if (Collides(file, inside)) {
                    collisions.push_back(path);
                } else if (MustCopy(file, inside + L"\\" + file.name)) {
                    sent.push_back(path);
                }
            }
        }
        sent.insert(sent.end(), collisions.begin(), collisions.end());
        for (const TNode& folder : tree_.files.Children(kSource + inside)) {
            if (folder.attributes == FILE_ATTRIBUTE_DIRECTORY && folder.name[0] != L'.') {
                ScanFolder(inside + L"\\" + folder.name);
            }
        }
    }

    static bool IsFolder(const TNode& node) { return (node.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    const TNode* CopyOf(const std::wstring& inside) const {
        const TNode* copy = tree_.files.Find(kBackup + inside);
        return copy == nullptr || IsFolder(*copy) ? nullptr : copy;
    }

    // Whether another file of the folder has the copy of this name, or will get it.
    bool Collides(const TNode& file, const std::wstring& inside) {
        const TNode* copy = CopyOf(inside + L"\\" + file.name);
        const TNode* folder = tree_.files.Find(kBackup + inside);
        const bool isListed = folder == nullptr || (IsFolder(*folder) && !tree_.broken.contains(inside));
        if (copy != nullptr) {
            return isListed && copy->name != file.name &&
                   (HasFile(kSource + inside, copy->name) || !names_.insert(copy->name).second);
        }
        const auto copies = tree_.files.Children(kBackup + inside);
        const bool hasOtherSpelling = std::ranges::any_of(copies, [&](const TNode& other) {
            return !IsFolder(other) && FoldedCase(other.name) == FoldedCase(file.name);
        });
        return !(isListed && hasOtherSpelling) && !names_.insert(L"new " + FoldedCase(file.name)).second;
    }
    bool HasFile(const std::wstring& folder, const std::wstring& name) const {
        return std::ranges::any_of(tree_.files.Children(folder),
                                   [&](const TNode& file) { return !IsFolder(file) && file.name == name; });
    }

    static TFileState StateOf(const TNode& file) {
        return {UniversalDateTime(static_cast<std::uint64_t>(file.lastWrite.dwHighDateTime) << 32 |
                                  file.lastWrite.dwLowDateTime),
                file.size};
    }
    bool MustCopy(const TNode& file, const std::wstring& inside) const {
        const TNode* copy = CopyOf(inside);
        const auto recorded = tree_.records.find(kSource + inside);
        return DecideCopy(StateOf(file), tree_.localTime.ToLocal(file.lastWrite),
                          recorded != tree_.records.end() ? std::optional(recorded->second) : std::nullopt,
                          copy != nullptr ? std::optional(StateOf(*copy)) : std::nullopt) ==
               TCopyDecision::Copy;
    }

    const TRandomTree& tree_;
    std::set<std::wstring> names_;
};

// What the scan sends to be copied, and the rows by which it tells that something went wrong.
std::vector<std::wstring> Scanned(IOmniTask& task, TOmniEventMonitor& monitor, const TRandomTree& tree,
                                  const TReadAhead& readAhead) {
    THashTable table;
    table.Open();
    for (const auto& [path, date] : tree.records) {
        table.Append(PathDigest(path), date);
    }
    SourceFolderRow row;
    row.Aktive = true;
    row.Directory = kSource;
    row.Rekursiv = true;
    const auto rows = std::make_shared<const std::vector<SourceFolderRow>>(1, row);
    std::vector<std::wstring> sent;
    monitor.OnTaskMessage = [&sent](IOmniTask&, TTaskMessage& message) {
        if (message.identifier == static_cast<std::uint16_t>(TScanMessage::FilesToCopy)) {
            const auto& list = *std::get<std::unique_ptr<TStringList>>(message.value);
            sent.insert(sent.end(), list.begin(), list.end());
        } else if (message.identifier == static_cast<std::uint16_t>(TScanMessage::Problem)) {
            sent.push_back(std::get<TProblem>(message.value).path);
        }
    };
    TFolderScan(task, TMemoryFiles::Table(),
                {rows, table.Snapshot(), L"N:", L"PC", false, nullptr, readAhead})
        .Run();
    monitor.Deliver();
    return sent;
}

TEST(ScanComparison, OneListingAFolderDecidesAsAQuestionAFileDoes) {
    CreateHashContext();
    unsigned wrong = kTrees;
    std::size_t copied = 0;
    TOmniEventMonitor monitor([] {});
    IOmniTaskControl control(
        [&](IOmniTask& task) {
            for (unsigned seed = 0; seed < kTrees; ++seed) {
                const TRandomTree tree(seed);
                const auto expected = TPlainScan(tree).sent;
                // New threads are dear: not for each of them.
                const std::chrono::seconds from(seed % 8 == 0 ? 0 : 1000);
                if (Scanned(task, monitor, tree, {.fromDuration = from}) != expected) {
                    wrong = seed;
                    return;
                }
                copied += expected.size();
            }
        },
        L"Comparison");
    control.MonitorWith(monitor);
    control.Run();
    EXPECT_TRUE(control.WaitFor(kUnlimitedWait));
    EXPECT_EQ(wrong, kTrees) << "the tree of this seed is decided differently";
    std::printf("%u trees, %zu files to copy\n", kTrees, copied);
    EXPECT_GT(copied, kTrees);
}

}  // namespace
