// What the notification thread has to do, in order.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace Rpc {

// Bounded by its users: each subscription has one notification in it at a time.
//
// Threads: Run on the notification thread, the others from any.
class CNotificationQueue {
 public:
  using Task = std::function<void()>;

  // Dropped without a trace after Stop.
  void Post(Task task);

  // Runs the tasks until Stop.
  void Run();

  // Ends Run after the task under way; what is queued is dropped.
  void Stop();

 private:
  std::mutex mMutex;
  std::condition_variable mCondition;
  std::deque<Task> mTasks;  // guarded by mMutex
  bool mStopped = false;    // guarded by mMutex
};

}  // namespace Rpc
