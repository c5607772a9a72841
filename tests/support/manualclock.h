// A steady clock that stands still until the test moves it.
//
// A worker that is still busy sees the new time only afterwards: call its Sync before and after
// Advance, and each step of time is one step of the worker.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>

#include "platform/worker/steadyclock.h"

class ManualClock : public ISteadyClock {
 public:
  TimePoint Now() const override {
    const std::lock_guard lock(mMutex);
    return mNow;
  }

  void WaitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                 TimePoint timePoint) override {
    std::unique_lock ownLock(mMutex);
    if (mNow >= timePoint) {
      return;
    }
    const auto waiter = mWaiters.insert(mWaiters.end(), {&condition, timePoint});
    mChanged.notify_all();
    ownLock.unlock();
    condition.wait(lock);
    ownLock.lock();
    mWaiters.erase(waiter);
    mChanged.notify_all();
  }

  // Moves the time, and returns when everyone who waited for a point up to then has woken.
  void Advance(std::chrono::nanoseconds duration) {
    std::unique_lock lock(mMutex);
    mNow += duration;
    while (NotifyDue()) {
      // A waiter that has looked at the time but does not wait yet misses a notification, and its
      // lock cannot be taken from here: notify again until it has left.
      mChanged.wait_for(lock, std::chrono::milliseconds(1));
    }
  }

  // Waits until a thread waits for this point; false when none has within a limit that only a fault
  // reaches.
  bool WaitForWaiter(TimePoint timePoint) const {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::seconds(20), [&] {
      return std::ranges::any_of(
          mWaiters, [&](const Waiter& waiter) { return waiter.mTimePoint == timePoint; });
    });
  }

 private:
  struct Waiter {
    std::condition_variable* mCondition;
    TimePoint mTimePoint;
  };

  bool NotifyDue() {
    bool someDue = false;
    for (const Waiter& waiter : mWaiters) {
      if (waiter.mTimePoint <= mNow) {
        waiter.mCondition->notify_all();
        someDue = true;
      }
    }
    return someDue;
  }

  mutable std::mutex mMutex;
  mutable std::condition_variable mChanged;
  TimePoint mNow = TimePoint(std::chrono::hours(1));  // guarded by mMutex
  std::list<Waiter> mWaiters;                         // guarded by mMutex
};
