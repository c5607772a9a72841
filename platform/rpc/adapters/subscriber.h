// A subscription that begins when its owner first wants it and ends with the owner or the backend.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/rpc/clientcontext.h"
#include "platform/rpc/subscription.h"

namespace Rpc {

// Threads: Begin from any thread.
template <typename Request, typename Notification>
class CSubscriber {
 public:
  using Subscription = CSubscription<Request, Notification>;

  CSubscriber(std::shared_ptr<CClientContext> context, std::shared_ptr<CServiceChannel> channel,
              const char* method)
      : mContext(std::move(context)), mChannel(std::move(channel)), mMethod(method) {}

  ~CSubscriber() {
    if (mSubscription) {
      mSubscription->Cancel();
    }
  }

  void Begin(typename Subscription::Handler handler) {
    const std::lock_guard lock(mMutex);
    if (mSubscription) {
      return;
    }
    mSubscription =
        std::make_shared<Subscription>(mChannel, mMethod, mContext->Queue(), std::move(handler));
    mSubscription->Start();
    mContext->OnStop([weak = std::weak_ptr(mSubscription)] {
      if (const auto subscription = weak.lock()) {
        subscription->Stop();
      }
    });
  }

 private:
  const std::shared_ptr<CClientContext> mContext;
  const std::shared_ptr<CServiceChannel> mChannel;
  const char* const mMethod;
  std::mutex mMutex;
  std::shared_ptr<Subscription> mSubscription;  // guarded by mMutex
};

}  // namespace Rpc
