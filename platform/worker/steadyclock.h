// The steady clock as something that can be exchanged: production runs on the machine's own clock,
// tests run on one that they hold in their hand.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

class ISteadyClock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  virtual ~ISteadyClock() = default;

  virtual TimePoint Now() const = 0;

  // Waits on the condition until it is notified or the clock has reached the time point. May wake
  // early; the caller looks again. The lock is held on entry and on return.
  virtual void WaitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                         TimePoint timePoint) = 0;
};

// The machine's steady clock, shared by all who ask.
std::shared_ptr<ISteadyClock> SystemSteadyClock();
