// Every write that reached the virtual hardware, refused ones too, in order and time-stamped.
//
// Threads: may be called from any. Holds the newest writes up to a limit; older ones are dropped.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/worker/steadyclock.h"

struct SWrite {
  ISteadyClock::TimePoint time;  // when it had taken effect or was refused
  std::string device;
  std::string attribute;
  std::string text;          // empty if already the opening was refused
  int error = 0;             // errno value
  std::size_t accepted = 0;  // bytes
};

class CWriteHistory {
 public:
  // A place between two writes: the number of writes before it.
  using Mark = std::uint64_t;

  explicit CWriteHistory(std::shared_ptr<ISteadyClock> clock, std::size_t limit = 100'000);

  // Called after each write. Set before the first one.
  void SetListener(std::function<void()> listener) { mListener = std::move(listener); }

  // Sets the time.
  void Add(SWrite write);

  Mark End() const;
  // From the mark on; those that have been dropped are missing at the front.
  std::vector<SWrite> Since(Mark mark) const;
  // Waits for a write behind the mark; false if there is none at the deadline.
  bool WaitBeyond(Mark mark, ISteadyClock::TimePoint deadline) const;

 private:
  const std::shared_ptr<ISteadyClock> mClock;
  const std::size_t mLimit;
  std::function<void()> mListener = [] {};

  mutable std::mutex mMutex;
  mutable std::condition_variable mAdded;
  // Guarded by mMutex.
  std::deque<SWrite> mWrites;
  Mark mDropped = 0;
};
