#include "support/retries.h"

#include <algorithm>

namespace {

constexpr unsigned kUsual = 1000;
// Where waiting has not helped for a while it is a real denial: a second for each of thousands of files would
// take the night.
constexpr unsigned kInVainBeforeHurry = 3;
constexpr unsigned kInHurry = 20;
constexpr unsigned kFirstPause = 10;

}  // namespace

unsigned TPatience::ForOneFile() const {
    return inVain_ < kInVainBeforeHurry ? kUsual : kInHurry;
}

TErrorCode TRetries::operator()(const std::function<TErrorCode()>& step) {
    TErrorCode error = step();
    if (!IsTransientRefusal(error) || left_ == 0) {
        return error;
    }
    for (unsigned pause = kFirstPause; IsTransientRefusal(error) && left_ > 0; pause *= 2) {
        const unsigned wait = std::min(pause, left_);
        left_ -= wait;
        calls_.Sleep(wait);
        error = step();
    }
    if (IsTransientRefusal(error)) {
        patience_.WaitedInVain();
    } else {
        patience_.WaitingHelped();
    }
    return error;
}
