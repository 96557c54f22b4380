#include "ui/timer.h"

#include <utility>

namespace {

constexpr UINT_PTR kTimerId = 1;

}  // namespace

TTimer::TTimer(UINT interval, std::function<void()> handler)
    : handler_(std::move(handler)),
      interval_(interval),
      window_([this](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
          if (message != WM_TIMER) {
              return std::nullopt;
          }
          // A tick that was under way when the timer was switched off is not delivered.
          if (enabled_) {
              handler_();
          }
          return 0;
      }) {}

void TTimer::SetEnabled(bool enabled) {
    enabled_ = enabled;
    if (enabled) {
        SetTimer(window_.Handle(), kTimerId, interval_, nullptr);
    } else {
        KillTimer(window_.Handle(), kTimerId);
    }
}
