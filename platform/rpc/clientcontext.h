// What all clients of one backend share: their channels, one a service, the notification queue, and
// the order in which they end.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/rpc/notificationqueue.h"

namespace Rpc {

class CServiceChannel;

// Threads: everything from any thread.
class CClientContext {
 public:
  explicit CClientContext(std::string socketDirectory);
  ~CClientContext();

  // The channel to the service, made when it is first asked for.
  std::shared_ptr<CServiceChannel> Channel(const std::string& name);

  const std::shared_ptr<CNotificationQueue>& Queue() const { return mQueue; }

  // Registers what ends a subscription; called at once when the context has been stopped already.
  void OnStop(std::function<void()> stop);

  void PrepareStop();

  // Ends all calls, subscriptions and the queue. Harmless when repeated.
  void Stop();

 private:
  const std::string mSocketDirectory;
  const std::shared_ptr<CNotificationQueue> mQueue = std::make_shared<CNotificationQueue>();
  std::mutex mMutex;
  std::map<std::string, std::shared_ptr<CServiceChannel>> mChannels;  // guarded by mMutex
  std::vector<std::function<void()>> mStops;                          // guarded by mMutex
  bool mStopped = false;                                              // guarded by mMutex
};

}  // namespace Rpc
