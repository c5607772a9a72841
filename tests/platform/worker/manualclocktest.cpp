#include <gtest/gtest.h>

#include <thread>

#include "tests/support/manualclock.h"

namespace {

using namespace std::chrono_literals;

TEST(AManualClock, WakesEveryWaiterWhoseTimeHasComeAndNoOther) {
  ManualClock clock;
  std::mutex mutex;
  std::condition_variable condition;
  const auto start = clock.Now();
  const auto waitFor = [&](std::chrono::seconds delay) {
    return std::thread([&, delay] {
      std::unique_lock lock(mutex);
      while (clock.Now() < start + delay) {
        clock.WaitUntil(condition, lock, start + delay);
      }
    });
  };
  std::thread early = waitFor(1s);
  std::thread late = waitFor(5s);
  ASSERT_TRUE(clock.WaitForWaiter(start + 1s));
  ASSERT_TRUE(clock.WaitForWaiter(start + 5s));

  clock.Advance(4s);
  early.join();
  EXPECT_TRUE(clock.WaitForWaiter(start + 5s));

  clock.Advance(1s);
  late.join();
}

TEST(AManualClock, DoesNotWaitForAPointThatHasPassed) {
  ManualClock clock;
  std::mutex mutex;
  std::condition_variable condition;
  std::unique_lock lock(mutex);
  clock.WaitUntil(condition, lock, clock.Now());
  EXPECT_TRUE(lock.owns_lock());
}

// Each round races the waiter's way into the wait against the advance: a wake-up lost in one of
// them would leave this test hanging.
TEST(AManualClock, LosesNoWakeUpAgainstAThreadThatIsAboutToWait) {
  ManualClock clock;
  std::mutex mutex;
  std::condition_variable condition;
  constexpr int kRounds = 3000;
  const auto start = clock.Now();
  std::thread waiter([&] {
    std::unique_lock lock(mutex);
    for (int round = 1; round <= kRounds; ++round) {
      while (clock.Now() < start + round * 1s) {
        clock.WaitUntil(condition, lock, start + round * 1s);
      }
    }
  });
  for (int round = 0; round < kRounds; ++round) {
    clock.Advance(1s);
  }
  waiter.join();
  EXPECT_EQ(clock.Now(), start + kRounds * 1s);
}

}  // namespace
