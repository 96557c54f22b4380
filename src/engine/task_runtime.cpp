#include "engine/task_runtime.h"

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
    std::unique_lock lock(task_->mutex_);
    const auto free = [this] {
        if (task_->terminated_ && task_->breakOff_) {
            task_->breakOff_();
        }
    };
    return WaitInSteps(
        lock, task_->endedCondition_, maxWait, [this] { return task_->ended_; }, free, whileWaiting);
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
