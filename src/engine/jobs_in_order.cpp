#include "engine/jobs_in_order.h"

#include <thread>

#include "engine/wait_in_steps.h"

namespace {

constexpr std::uint32_t kWaitForEnd = 5000;  // milliseconds

}  // namespace

// Owned by the threads as well: one that is stuck outlives the object that started it.
struct TJobThreads::TShared {
    std::mutex mutex;
    std::condition_variable jobAdded;
    std::condition_variable threadEnded;
    std::deque<std::function<void()>> jobs;
    std::vector<std::function<void()>> breakOffs;
    std::size_t threads = 0;
    std::size_t idle = 0;
    bool stopped = false;
};

TJobThreads::TJobThreads(std::size_t most, TThreadBeginning begin)
    : most_(most), begin_(std::move(begin)), shared_(std::make_shared<TShared>()) {}

TJobThreads::~TJobThreads() {
    if (!areLeft_) {
        End(kWaitForEnd);
    }
}

void TJobThreads::Add(std::function<void()> job) {
    const std::lock_guard lock(shared_->mutex);
    if (shared_->stopped) {
        return;
    }
    shared_->jobs.push_back(std::move(job));
    if (shared_->jobs.size() <= shared_->idle || shared_->threads == most_) {
        shared_->jobAdded.notify_one();
        return;
    }
    // Nothing of this object: the thread may outlive it.
    const auto work = [shared = shared_, begin = begin_] {
        if (begin) {
            if (std::function<void()> breakOff = begin()) {
                const std::lock_guard guard(shared->mutex);
                shared->breakOffs.push_back(std::move(breakOff));
            }
        }
        Work(shared);
    };
    try {
        std::thread(work).detach();
        ++shared_->threads;
    } catch (...) {
        // Those that there are do it.
        if (shared_->threads == 0) {
            shared_->jobs.pop_back();
            throw;
        }
    }
}

void TJobThreads::Work(const std::shared_ptr<TShared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (!shared->stopped) {
        if (shared->jobs.empty()) {
            ++shared->idle;
            shared->jobAdded.wait(lock);
            --shared->idle;
            continue;
        }
        std::function<void()> job = std::move(shared->jobs.front());
        shared->jobs.pop_front();
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
    }
    --shared->threads;
    shared->threadEnded.notify_all();
}

void TJobThreads::Stop() {
    std::deque<std::function<void()>> never;
    const std::lock_guard lock(shared_->mutex);
    shared_->stopped = true;
    never.swap(shared_->jobs);
    shared_->jobAdded.notify_all();
}

bool TJobThreads::End(std::uint32_t maxWait, const std::function<void()>& whileWaiting) {
    Stop();
    std::unique_lock lock(shared_->mutex);
    const auto free = [this] {
        for (const std::function<void()>& breakOff : shared_->breakOffs) {
            breakOff();
        }
    };
    areLeft_ = !WaitInSteps(
        lock, shared_->threadEnded, maxWait, [this] { return shared_->threads == 0; }, free, whileWaiting);
    return !areLeft_;
}
