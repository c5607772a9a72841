#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/manualclock.h"

namespace {

using namespace std::chrono_literals;

// Each round races the waiter's way into the wait against the advance: a wake-up lost in one of
// them would leave this test hanging.
TEST(AManualClock, LosesNoWakeUpAgainstAThreadThatIsAboutToWait) {
  ManualClock clock;
  constexpr int kRounds = 3000;
  const auto start = clock.Now();
  std::atomic<int> passed = 0;
  std::thread waiter([&] {
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    for (int round = 1; round <= kRounds; ++round) {
      while (clock.Now() < start + round * 1s) {
        clock.WaitUntil(condition, lock, start + round * 1s);
      }
      passed = round;
    }
  });
  for (int round = 1; round <= kRounds; ++round) {
    clock.Advance(1s);
    while (passed < round) {
      std::this_thread::yield();
    }
  }
  waiter.join();
}

}  // namespace
