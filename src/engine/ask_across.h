// A question that one thread asks and another one answers when it looks for it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

// One thread asks at a time. Whoever may be asked by a thread that is left to itself shares this with it.
template <typename Question, typename Answer>
class TAskAcross {
public:
    // `asked` is called on the asking thread when a question waits.
    explicit TAskAcross(std::function<void()> asked) : asked_(std::move(asked)) {}
    TAskAcross(const TAskAcross&) = delete;
    TAskAcross& operator=(const TAskAcross&) = delete;
    ~TAskAcross() = default;

    // Waits for the answer.
    Answer Ask(Question question) {
        {
            const std::lock_guard lock(mutex_);
            question_ = std::move(question);
            answer_.reset();
            ++number_;
        }
        asked_();
        std::unique_lock lock(mutex_);
        answered_.wait(lock, [this] { return answer_ || last_; });
        question_.reset();
        return answer_ ? *answer_ : *last_;
    }

    // Has `answer` answer the question that waits, if there is one. It is called without the lock and may
    // call this again, which then answers the same question: the first answer counts.
    template <typename TAnswer>
    void AnswerBy(const TAnswer& answer) {
        std::unique_lock lock(mutex_);
        if (!question_ || answer_) {
            return;
        }
        const Question question = *question_;
        const std::uint64_t number = number_;
        lock.unlock();
        const Answer given = answer(question);
        lock.lock();
        if (number == number_ && !answer_) {
            answer_ = given;
            answered_.notify_one();
        }
    }

    // Nobody looks for questions any more: the answer to the one that waits and to all that follow.
    void Close(Answer last) {
        const std::lock_guard lock(mutex_);
        last_ = last;
        answered_.notify_one();
    }

private:
    const std::function<void()> asked_;
    std::mutex mutex_;  // for all below
    std::condition_variable answered_;
    std::optional<Question> question_;
    std::optional<Answer> answer_;
    std::optional<Answer> last_;
    std::uint64_t number_ = 0;  // of the questions so far
};
