#include "virtualcharger/hardware/writehistory.h"

#include <utility>

CWriteHistory::CWriteHistory(std::shared_ptr<ISteadyClock> clock, std::size_t limit)
    : mClock(std::move(clock)), mWrites(limit) {}

void CWriteHistory::Add(SWrite write) {
  {
    const std::lock_guard lock(mMutex);
    write.time = mClock->Now();
    mWrites.Add(std::move(write));
  }
  mAdded.notify_all();
  mListener();
}

CWriteHistory::Mark CWriteHistory::End() const {
  const std::lock_guard lock(mMutex);
  return mWrites.End();
}

std::vector<SWrite> CWriteHistory::Since(Mark mark) const {
  const std::lock_guard lock(mMutex);
  return mWrites.Since(mark);
}

bool CWriteHistory::WaitBeyond(Mark mark, ISteadyClock::TimePoint deadline) const {
  std::unique_lock lock(mMutex);
  while (mWrites.End() <= mark) {
    if (mClock->Now() >= deadline) return false;
    mClock->WaitUntil(mAdded, lock, deadline);
  }
  return true;
}
