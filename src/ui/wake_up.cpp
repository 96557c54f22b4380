#include "ui/wake_up.h"

#include <utility>

namespace {

constexpr UINT kWakeUpMessage = WM_APP + 1;

}  // namespace

TWakeUp::TWakeUp(std::function<void()> handler)
    : handler_(std::move(handler)), window_([this](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
          if (message != kWakeUpMessage) {
              return std::nullopt;
          }
          // Before the handler looks, so that what comes while it looks wakes it again.
          pending_ = false;
          handler_();
          return 0;
      }) {}

bool TWakeUp::Post() {
    if (pending_.exchange(true)) {
        return true;
    }
    if (!PostMessageW(window_.Handle(), kWakeUpMessage, 0, 0)) {
        pending_ = false;
        return false;
    }
    return true;
}
