// Who acts on the feedback events that other processes ask for.
#pragma once

#include <functional>
#include <utility>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/feedback.pb.h"

// Threads: connected before anything is served; after that the callback runs on any of the RPC
// layer's threads at once.
class IFeedbackClient {
 public:
  using EventCallback = std::function<ipc::MResult(const ipc::MFbEventType&, ipc::MInstanceType)>;

  virtual ~IFeedbackClient() = default;

  void SetEventCallback(EventCallback callback) { mEventCallback = std::move(callback); }

 protected:
  EventCallback mEventCallback;
};
