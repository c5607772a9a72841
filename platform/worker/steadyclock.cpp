#include "platform/worker/steadyclock.h"

namespace {

class CSystemSteadyClock : public ISteadyClock {
 public:
  TimePoint Now() const override { return std::chrono::steady_clock::now(); }

  void WaitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                 TimePoint timePoint) override {
    condition.wait_until(lock, timePoint);
  }
};

}  // namespace

std::shared_ptr<ISteadyClock> SystemSteadyClock() {
  static const auto clock = std::make_shared<CSystemSteadyClock>();
  return clock;
}
