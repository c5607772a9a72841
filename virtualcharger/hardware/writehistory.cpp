#include "virtualcharger/hardware/writehistory.h"

#include <algorithm>
#include <utility>

CWriteHistory::CWriteHistory(std::shared_ptr<ISteadyClock> clock, std::size_t limit)
    : mClock(std::move(clock)), mLimit(limit) {}

void CWriteHistory::Add(SWrite write) {
  {
    const std::lock_guard lock(mMutex);
    write.time = mClock->Now();
    mWrites.push_back(std::move(write));
    if (mWrites.size() > mLimit) {
      mWrites.pop_front();
      ++mDropped;
    }
  }
  mAdded.notify_all();
  mListener();
}

CWriteHistory::Mark CWriteHistory::End() const {
  const std::lock_guard lock(mMutex);
  return mDropped + mWrites.size();
}

std::vector<SWrite> CWriteHistory::Since(Mark mark) const {
  const std::lock_guard lock(mMutex);
  const auto first = std::min<Mark>(mark - std::min(mark, mDropped), mWrites.size());
  return {mWrites.begin() + static_cast<std::ptrdiff_t>(first), mWrites.end()};
}

bool CWriteHistory::WaitBeyond(Mark mark, ISteadyClock::TimePoint deadline) const {
  std::unique_lock lock(mMutex);
  while (mDropped + mWrites.size() <= mark) {
    if (mClock->Now() >= deadline) return false;
    mClock->WaitUntil(mAdded, lock, deadline);
  }
  return true;
}
