#include "platform/rpc/notificationqueue.h"

#include <utility>

namespace Rpc {

void CNotificationQueue::Post(Task task) {
  {
    const std::lock_guard lock(mMutex);
    if (mStopped) {
      return;
    }
    mTasks.push_back(std::move(task));
  }
  mCondition.notify_one();
}

void CNotificationQueue::Run() {
  std::unique_lock lock(mMutex);
  for (;;) {
    mCondition.wait(lock, [this] { return mStopped || !mTasks.empty(); });
    if (mStopped) {
      return;
    }
    Task task = std::move(mTasks.front());
    mTasks.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

void CNotificationQueue::Stop() {
  std::deque<Task> dropped;
  {
    const std::lock_guard lock(mMutex);
    mStopped = true;
    dropped.swap(mTasks);
  }
  mCondition.notify_all();
}

}  // namespace Rpc
