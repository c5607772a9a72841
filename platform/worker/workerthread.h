// What stands behind a CWorker: its thread and its queue. CWorker has the contract.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/worker/steadyclock.h"

class CPostedCall;

// Held by its CWorker, by its own thread while that runs, and briefly by handles.
class CWorkerThread : public std::enable_shared_from_this<CWorkerThread> {
 public:
  using Call = std::function<void()>;
  using TimePoint = ISteadyClock::TimePoint;
  using PostedCall = std::shared_ptr<CPostedCall>;
  using Queue = std::multimap<TimePoint, PostedCall>;

  CWorkerThread(std::string name, std::shared_ptr<ISteadyClock> clock);

  void Start();
  void Stop();

  // Asks for the end and drops what is queued, without waiting.
  void Kill();

  // For an owner that goes away while its own thread is inside one of its calls.
  void Detach();

  bool IsRunning() const;
  bool IsThisThread() const;
  TimePoint Now() const { return mClock->Now(); }

  // Without a due time the call is due at once.
  PostedCall Post(Call call, std::optional<TimePoint> due, std::chrono::nanoseconds period);
  void Cancel(CPostedCall& call);

  // Posts the call and waits until it has run; false when it did not and never will. Passes its
  // exception on. Not for the own thread.
  bool RunAndWait(const Call& call);

  bool Sleep(std::chrono::nanoseconds duration);

 private:
  using Lock = std::unique_lock<std::mutex>;

  void Run();
  void RunFirst(Lock& lock, TimePoint now);
  void Insert(const PostedCall& call, TimePoint due);
  void AskForEnd();
  void DropQueue(Lock lock);

  // Constant after construction.
  const std::string mName;
  const std::shared_ptr<ISteadyClock> mClock;

  // Taken before mMutex; never by the own thread, which a holder may be joining.
  std::mutex mThreadMutex;
  std::thread mThread;  // guarded by mThreadMutex

  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  Queue mQueue;          // guarded by mMutex
  bool mActive = false;  // guarded by mMutex; started and not asked to end
};
