#include "engine/task_runtime.h"

#include <algorithm>
#include <chrono>

namespace {

using TClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kWaitStep{50};

}  // namespace

void IOmniTask::Send(std::uint16_t identifier, TTaskValue value) {
    const std::lock_guard lock(mutex_);
    if (monitor_ != nullptr) {
        monitor_->Add({shared_from_this(), TTaskMessage{identifier, std::move(value)}});
    }
}

void IOmniTask::Run(const TTaskMethod& method) {
    try {
        method(*this);
    } catch (...) {
        // An exception ends the task and nothing else: its end is told below as any other.
    }
    {
        const std::lock_guard lock(mutex_);
        if (monitor_ != nullptr) {
            monitor_->Add({shared_from_this(), std::nullopt});
        }
        ended_ = true;
        breakOff_ = nullptr;
    }
    endedCondition_.notify_all();
}

IOmniTaskControl::IOmniTaskControl(TTaskMethod method, std::wstring name) : method_(std::move(method)) {
    task_->name_ = std::move(name);
}

IOmniTaskControl::~IOmniTaskControl() {
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(task_->mutex_);
        if (task_->terminated_ && !task_->ended_) {
            task_->monitor_ = nullptr;
            thread_.detach();
            return;
        }
    }
    thread_.join();
}

void IOmniTaskControl::SetPriority(TTaskPriority level, void (*apply)(TTaskPriority)) {
    priority_ = level;
    applyPriority_ = apply;
}

void IOmniTaskControl::Run() {
    // Nothing of this control: the thread may outlive it.
    thread_ = std::thread([task = task_, method = std::move(method_), priority = priority_,
                           applyPriority = applyPriority_, makeBreakOff = makeBreakOff_] {
        if (applyPriority != nullptr) {
            applyPriority(priority);
        }
        if (makeBreakOff != nullptr) {
            const std::lock_guard lock(task->mutex_);
            task->breakOff_ = makeBreakOff();
        }
        task->Run(method);
    });
}

bool IOmniTaskControl::Terminate(std::uint32_t maxWait, const std::function<void()>& whileWaiting) {
    task_->terminated_ = true;
    return WaitFor(maxWait, whileWaiting);
}

bool IOmniTaskControl::WaitFor(std::uint32_t maxWait, const std::function<void()>& whileWaiting) {
    if (!thread_.joinable()) {
        return true;
    }
    const auto started = TClock::now();
    std::unique_lock lock(task_->mutex_);
    while (!task_->ended_) {
        // Each time: it may have got stuck in the next call.
        if (task_->terminated_ && task_->breakOff_) {
            task_->breakOff_();
        }
        auto step = kWaitStep;
        if (maxWait != kUnlimitedWait) {
            const auto waited =
                std::chrono::duration_cast<std::chrono::milliseconds>(TClock::now() - started);
            if (waited.count() >= maxWait) {
                return false;
            }
            step = std::min(step, std::chrono::milliseconds(maxWait) - waited);
        }
        if (task_->endedCondition_.wait_for(lock, step) == std::cv_status::timeout && whileWaiting) {
            lock.unlock();
            whileWaiting();
            lock.lock();
        }
    }
    return true;
}

void TOmniEventMonitor::Add(TEvent event) {
    {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }
    wakeUp_();
}

std::optional<TOmniEventMonitor::TEvent> TOmniEventMonitor::TakeFirst() {
    const std::lock_guard lock(mutex_);
    if (events_.empty()) {
        return std::nullopt;
    }
    TEvent event = std::move(events_.front());
    events_.pop_front();
    return event;
}

void TOmniEventMonitor::Deliver() {
    while (auto event = TakeFirst()) {
        if (event->message) {
            OnTaskMessage(*event->task, *event->message);
        } else {
            OnTaskTerminated(*event->task);
        }
    }
}
