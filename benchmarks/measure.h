// What the measuring programs share: a stopwatch, and the lines that scripts/bench.py gathers.
#pragma once

#include <chrono>
#include <cstdio>

// The seconds that an action takes.
template <typename Action>
double SecondsOf(Action&& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// One measured value of a side of a row.
inline void Tell(const char* row, const char* side, double value) {
    std::printf("sample %s %s %.9g\n", row, side, value);
    std::fflush(stdout);
}
