// Background tasks that talk to the window's thread by messages.
#pragma once

#include <any>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "engine/wait_in_steps.h"
#include "support/date_time.h"
#include "support/path_digest.h"
#include "support/problem.h"
#include "texts/run_texts.h"

using TStringList = std::vector<std::wstring>;

// A source folder of an active row whose comparison has ended.
struct TComparedFolder {
    std::wstring path;
    std::int64_t files = 0;  // how many passed the filters, in it and below it
};

// A file whose copy is right and whose hash record gets another date.
struct TUnchangedFile {
    TPathDigest hash;
    TDateTime date;
};
using TUnchangedList = std::vector<TUnchangedFile>;

// How far a check of the backup is.
struct TVerifyProgress {
    std::wstring path;        // of the source file in hand
    std::uint64_t bytes = 0;  // compared so far, in all
    std::uint64_t done = 0;   // of the file
    std::uint64_t size = 0;   // of the file
};

// What a message carries. An object is handed over whole: the receiver owns it.
using TTaskValue =
    std::variant<std::monostate, std::wstring, std::int64_t, std::unique_ptr<TStringList>,
                 std::unique_ptr<TUnchangedList>, TProblem, TComparedFolder, TVerifyProgress, TVerifyCounts>;

struct TTaskMessage {
    std::uint16_t identifier = 0;
    TTaskValue value;
};

enum class TTaskPriority { Idle, Lowest, BelowNormal, Normal, AboveNormal, Highest };

class TOmniEventMonitor;
class IOmniTask;

using TTaskMethod = std::function<void(IOmniTask&)>;

// The task's own side: its parameters, the way to send messages, and whether it is asked to stop.
class IOmniTask : public std::enable_shared_from_this<IOmniTask> {
public:
    const std::wstring& Name() const { return name_; }
    // True once a stop has been requested.
    bool Terminated() const { return terminated_.load(); }
    // Never waits for the receiver.
    void Send(std::uint16_t identifier, TTaskValue value);

    // A parameter by name; asking for one that was not set, or as another type, is a mistake in the program
    // (std::out_of_range, std::bad_any_cast).
    template <typename Value>
    const Value& Parameter(const std::wstring& name) const {
        return std::any_cast<const Value&>(parameters_.at(name));
    }

private:
    friend class IOmniTaskControl;

    void Run(const TTaskMethod& method);

    std::wstring name_;
    std::map<std::wstring, std::any> parameters_;
    std::atomic<bool> terminated_ = false;
    std::mutex mutex_;  // for all below
    TOmniEventMonitor* monitor_ = nullptr;
    std::function<void()> breakOff_;
    std::condition_variable endedCondition_;
    bool ended_ = false;
};

// The owner's side of a task: made, given its parameters, run once. The thread is joined when the control
// goes, but for one whose Terminate was waited for in vain: that one is left to itself and reports to nobody
// any more. So the method must own whatever it works with, or work with what lasts as long as the program.
class IOmniTaskControl {
public:
    IOmniTaskControl(TTaskMethod method, std::wstring name);
    IOmniTaskControl(const IOmniTaskControl&) = delete;
    IOmniTaskControl& operator=(const IOmniTaskControl&) = delete;
    ~IOmniTaskControl();

    // All four before Run. The monitor must outlive the control.
    void MonitorWith(TOmniEventMonitor& monitor) { task_->monitor_ = &monitor; }
    void SetParameter(const std::wstring& name, std::any value) {
        task_->parameters_[name] = std::move(value);
    }
    // `apply` is called on the new thread with the level.
    void SetPriority(TTaskPriority level, void (*apply)(TTaskPriority));
    // `make` is called on the new thread; what it answers is called to free that thread from a call of the
    // system it is stuck in. Without it a task that was asked to stop ends when that call does.
    void BreakOffWith(std::function<void()> (*make)()) { makeBreakOff_ = make; }

    void Run();

    // Asks the task to stop, breaks off what it is stuck in, and waits for its end up to `maxWait`
    // milliseconds, calling `whileWaiting` a few times a second; true when it has ended.
    bool Terminate(std::uint32_t maxWait, const std::function<void()>& whileWaiting = {});
    // The same without asking it to stop.
    bool WaitFor(std::uint32_t maxWait, const std::function<void()>& whileWaiting = {});

    const std::shared_ptr<IOmniTask>& Task() const { return task_; }

private:
    std::shared_ptr<IOmniTask> task_ = std::make_shared<IOmniTask>();
    TTaskMethod method_;
    TTaskPriority priority_ = TTaskPriority::Normal;
    void (*applyPriority_)(TTaskPriority) = nullptr;
    std::function<void()> (*makeBreakOff_)() = nullptr;
    std::thread thread_;
};

// Brings the messages and the ends of tasks to the window's thread, in the order in which they were sent.
class TOmniEventMonitor {
public:
    using TMessageHandler = std::function<void(IOmniTask& task, TTaskMessage& message)>;
    using TTerminatedHandler = std::function<void(IOmniTask& task)>;

    TMessageHandler OnTaskMessage;
    TTerminatedHandler OnTaskTerminated;

    // `wakeUp` is called on the task's thread whenever something waits; it must lead to a call of Deliver on
    // the window's thread.
    explicit TOmniEventMonitor(std::function<void()> wakeUp) : wakeUp_(std::move(wakeUp)) {}

    // Calls the handlers for everything that waits. May be entered again from within a handler.
    void Deliver();

private:
    friend class IOmniTask;
    friend class IOmniTaskControl;

    struct TEvent {
        std::shared_ptr<IOmniTask> task;
        std::optional<TTaskMessage> message;  // none: the task has ended
    };

    void Add(TEvent event);
    std::optional<TEvent> TakeFirst();

    std::function<void()> wakeUp_;
    std::mutex mutex_;
    std::deque<TEvent> events_;
};
