// Who acts on the feedback events that other processes ask for.
#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/feedback.pb.h"

// Threads: any; the callback runs on several of the RPC layer's threads at once.
class IFeedbackClient {
 public:
  using EventCallback = std::function<ipc::MResult(const ipc::MFbEventType&, ipc::MInstanceType)>;

  virtual ~IFeedbackClient() = default;

  void SetEventCallback(EventCallback callback) {
    const std::lock_guard lock(mMutex);
    mEventCallback = std::move(callback);
  }

 protected:
  EventCallback GetEventCallback() const {
    const std::lock_guard lock(mMutex);
    return mEventCallback;
  }

 private:
  mutable std::mutex mMutex;
  EventCallback mEventCallback;  // guarded by mMutex
};
