// How many of gRPC's callbacks are under way for one channel.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace Rpc {

// A callback holds the channel through its objects even when it has told that it has ended. If it
// let go of the channel last, the thread that runs gRPC's callbacks would wait for its own end: so
// whoever ends a channel awaits the callbacks first.
//
// Threads: any.
class CCallbackCount {
 public:
  // Made first and destroyed last in a callback.
  class CInside {
   public:
    explicit CInside(std::shared_ptr<CCallbackCount> count) : mCount(std::move(count)) {
      const std::lock_guard lock(mCount->mMutex);
      ++mCount->mInside;
    }
    CInside(const CInside&) = delete;
    CInside& operator=(const CInside&) = delete;
    ~CInside() {
      const std::lock_guard lock(mCount->mMutex);
      --mCount->mInside;
      mCount->mLeft.notify_all();
    }

   private:
    const std::shared_ptr<CCallbackCount> mCount;
  };

  void AwaitNone() {
    std::unique_lock lock(mMutex);
    mLeft.wait(lock, [this] { return mInside == 0; });
  }

 private:
  std::mutex mMutex;
  std::condition_variable mLeft;
  unsigned mInside = 0;  // guarded by mMutex
};

}  // namespace Rpc
