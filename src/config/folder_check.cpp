#include "config/folder_check.h"

#include <deque>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "engine/source_walk.h"
#include "support/file_access.h"

namespace {

// A folder that does not answer keeps one of them busy; the others go on.
constexpr int kThreads = 4;

}  // namespace

struct TFolderCheck::TShared {
    std::mutex mutex;
    TWakeUp* wakeUp = nullptr;  // null: nobody waits for answers any more
    TPlatformCalls calls{};
    std::deque<std::wstring> waiting;
    // By the text of the row; nothing as long as it is not known.
    std::map<std::wstring, std::optional<bool>> isThere;
    int threads = 0;
};

TFolderCheck::TFolderCheck(std::function<void()> found)
    : shared_(std::make_shared<TShared>()), wakeUp_(std::move(found)) {
    shared_->wakeUp = &wakeUp_;
}

TFolderCheck::~TFolderCheck() {
    const std::scoped_lock lock(shared_->mutex);
    shared_->wakeUp = nullptr;
    shared_->waiting.clear();
}

void TFolderCheck::Ask(const TPlatformCalls& calls, const std::vector<SourceFolderRow>& rows) {
    const std::scoped_lock lock(shared_->mutex);
    shared_->calls = calls;
    for (const SourceFolderRow& row : rows) {
        const std::wstring folder = row.Directory.value_or(L"");
        if (shared_->isThere.emplace(folder, std::nullopt).second) {
            shared_->waiting.push_back(folder);
        }
    }
    // Those that run may all be waiting for an answer.
    for (std::size_t count = shared_->waiting.size(); count > 0 && shared_->threads < kThreads; --count) {
        try {
            std::thread([shared = shared_] { Work(shared); }).detach();
        } catch (const std::system_error&) {
            return;  // without a thread nothing is known, which is no worse than before
        }
        ++shared_->threads;
    }
}

void TFolderCheck::Work(const std::shared_ptr<TShared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (shared->wakeUp != nullptr && !shared->waiting.empty()) {
        SourceFolderRow row;
        row.Directory = std::move(shared->waiting.front());
        shared->waiting.pop_front();
        const TPlatformCalls calls = shared->calls;
        lock.unlock();
        const std::wstring folder = FolderOfRow(calls, row);
        const bool isThere = !folder.empty() && FolderExists(calls, folder);
        lock.lock();
        if (const auto known = shared->isThere.find(*row.Directory); known != shared->isThere.end()) {
            known->second = isThere;
        }
        if (shared->wakeUp != nullptr) {
            shared->wakeUp->Post();
        }
    }
    --shared->threads;
}

void TFolderCheck::Forget() {
    const std::scoped_lock lock(shared_->mutex);
    shared_->waiting.clear();
    shared_->isThere.clear();
}

bool TFolderCheck::IsMissing(const SourceFolderRow& row) const {
    const std::scoped_lock lock(shared_->mutex);
    const auto known = shared_->isThere.find(row.Directory.value_or(L""));
    return known != shared_->isThere.end() && known->second == false;
}
