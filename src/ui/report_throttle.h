// How often reports may cost something.
#pragma once

#include <algorithm>
#include <chrono>

// Decides, while work on the window's thread reports its progress, when it is time to look for input and when
// to paint. Input is cheap to look for and must be answered soon; painting gets a fixed share of the time,
// however long it takes on this machine.
class TReportThrottle {
public:
    using TTime = std::chrono::steady_clock::time_point;
    using TDuration = std::chrono::steady_clock::duration;

    // A click is answered within three times that.
    static constexpr TDuration kInputInterval = std::chrono::milliseconds(30);
    static constexpr TDuration kShortestPaintInterval = std::chrono::milliseconds(33);
    // One part of painting in so many parts of time.
    static constexpr int kPaintShare = 30;

    bool InputDue(TTime now) const { return now >= nextInput_; }
    void InputDone(TTime now) { nextInput_ = now + kInputInterval; }

    bool PaintDue(TTime now) const { return now >= nextPaint_; }
    void PaintDone(TTime begin, TTime end) {
        // A single painting may have waited for other programs: the cheaper of the last two counts.
        const TDuration cost = end - begin;
        const TDuration usual = std::min(cost, lastCost_);
        lastCost_ = cost;
        nextPaint_ = std::max(begin + kShortestPaintInterval, end + usual * (kPaintShare - 1));
    }

private:
    TTime nextInput_{};
    TTime nextPaint_{};
    TDuration lastCost_ = TDuration::max() / (2 * kPaintShare);
};
