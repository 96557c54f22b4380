#include "engine/task_runtime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <utility>

namespace {

// Stands for the window's thread: delivers whenever the monitor wakes it.
class TTestLoop {
public:
    TTestLoop()
        : monitor([this] {
              const std::lock_guard lock(mutex_);
              wanted_ = true;
              condition_.notify_all();
          }) {
        monitor.OnTaskMessage = [this](IOmniTask&, TTaskMessage& message) {
            received.push_back(std::move(message));
        };
        monitor.OnTaskTerminated = [this](IOmniTask&) { ended = true; };
    }

    void DeliverUntilEnded() {
        while (!ended) {
            {
                std::unique_lock lock(mutex_);
                condition_.wait(lock, [this] { return wanted_; });
                wanted_ = false;
            }
            monitor.Deliver();
        }
    }

    TOmniEventMonitor monitor;
    std::vector<TTaskMessage> received;
    bool ended = false;

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool wanted_ = false;
};

TEST(TaskRuntime, DeliversEverythingInOrderBeforeTheEnd) {
    TTestLoop loop;
    IOmniTaskControl control(
        [](IOmniTask& task) {
            for (std::int64_t number = 0; number < 5000; ++number) {
                task.Send(4, number);
            }
            auto files = std::make_unique<TStringList>();
            files->push_back(task.Parameter<std::wstring>(L"NAS"));
            task.Send(10, std::move(files));
        },
        L"ScanFolders");
    control.MonitorWith(loop.monitor);
    control.SetParameter(L"NAS", std::wstring(L"N:"));
    control.Run();
    loop.DeliverUntilEnded();

    ASSERT_EQ(loop.received.size(), 5001U);
    for (std::int64_t number = 0; number < 5000; ++number) {
        ASSERT_EQ(std::get<std::int64_t>(loop.received[static_cast<std::size_t>(number)].value), number);
    }
    EXPECT_EQ(std::get<std::unique_ptr<TStringList>>(loop.received.back().value)->front(), L"N:");
}

TEST(TaskRuntime, AnExceptionOnlyEndsTheTask) {
    TTestLoop loop;
    IOmniTaskControl control(
        [](IOmniTask& task) {
            task.Send(3, std::wstring(L"found"));
            throw std::runtime_error("broken");
        },
        L"ScanFolders");
    control.MonitorWith(loop.monitor);
    control.Run();
    loop.DeliverUntilEnded();
    EXPECT_EQ(loop.received.size(), 1U);
}

TEST(TaskRuntime, TerminateAsksAndWaitsWithinItsLimit) {
    TTestLoop loop;
    std::atomic<bool> mayEnd = false;
    IOmniTaskControl control(
        [&mayEnd](IOmniTask& task) {
            while (!task.Terminated() || !mayEnd) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        },
        L"ScanFolders");
    control.MonitorWith(loop.monitor);
    EXPECT_TRUE(control.WaitFor(0)) << "a task that never ran has nothing to wait for";
    control.Run();
    EXPECT_FALSE(control.WaitFor(20));
    int waits = 0;
    EXPECT_TRUE(control.Terminate(kUnlimitedWait, [&] {
        ++waits;
        mayEnd = true;
    }));
    EXPECT_GE(waits, 1);
    loop.DeliverUntilEnded();
}

struct TStuck {
    std::atomic<bool> reached = false;
    std::atomic<bool> freed = false;
};
std::shared_ptr<TStuck> stuck;

TTaskMethod StuckTask() {
    stuck = std::make_shared<TStuck>();
    return [call = stuck](IOmniTask& task) {
        call->reached = true;
        while (!call->freed) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        task.Send(4, std::int64_t{1});
    };
}

TEST(TaskRuntime, ACallThatHangsIsBrokenOff) {
    TTestLoop loop;
    IOmniTaskControl control(StuckTask(), L"PrepareRun");
    control.MonitorWith(loop.monitor);
    // The first time comes too early, as if the call had not begun.
    control.BreakOffWith([]() -> std::function<void()> {
        return [times = std::make_shared<int>(0)] { stuck->freed = ++*times > 1; };
    });
    control.Run();
    while (!stuck->reached) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(stuck->freed);
    EXPECT_TRUE(control.Terminate(10'000));
    loop.DeliverUntilEnded();
}

TEST(TaskRuntime, WhatCannotBeBrokenOffIsLeftToItself) {
    TTestLoop loop;
    {
        IOmniTaskControl control(StuckTask(), L"PrepareRun");
        control.MonitorWith(loop.monitor);
        control.Run();
        while (!stuck->reached) {
            std::this_thread::yield();
        }
        EXPECT_FALSE(control.Terminate(20));
    }
    const std::weak_ptr<TStuck> left = std::exchange(stuck, nullptr);
    left.lock()->freed = true;
    while (!left.expired()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    loop.monitor.Deliver();
    EXPECT_TRUE(loop.received.empty());
    EXPECT_FALSE(loop.ended);
}

TEST(TaskRuntime, DeliverMayBeEnteredAgainFromAHandler) {
    TTestLoop loop;
    std::vector<std::int64_t> order;
    loop.monitor.OnTaskMessage = [&](IOmniTask&, TTaskMessage& message) {
        order.push_back(std::get<std::int64_t>(message.value));
        loop.monitor.Deliver();
    };
    IOmniTaskControl control(
        [](IOmniTask& task) {
            for (std::int64_t number = 0; number < 50; ++number) {
                task.Send(4, number);
            }
        },
        L"ScanFolders");
    control.MonitorWith(loop.monitor);
    control.Run();
    loop.DeliverUntilEnded();
    EXPECT_EQ(order.size(), 50U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

}  // namespace
