// Every write that reached the virtual hardware, refused ones too, in order and time-stamped.
//
// Threads: may be called from any. Holds the newest writes up to a limit; older ones are dropped.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/history.h"

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
  using Mark = CHistory<SWrite>::Mark;

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
  std::function<void()> mListener = [] {};

  mutable std::mutex mMutex;
  mutable std::condition_variable mAdded;
  CHistory<SWrite> mWrites;  // guarded by mMutex
};
