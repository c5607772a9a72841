// The diagnostics service: takes the signals of all processes, notifies errors and warnings.
#pragma once

#include <cstddef>
#include <functional>

#include "platform/ipc/diagnostics.pb.h"

// Threads: at the serving end calls arrive on any of the RPC layer's threads at once. At the
// calling end the notification callback runs on the notification thread, one notification after the
// other.
class IDiagnostics {
 public:
  // Calling end: set by the owner; what it returns is the reply to the service.
  // Serving end: set by the RPC layer; hands the notification to every subscriber and returns the
  // first reply that is not Ok, after all have replied or the time limit has passed.
  using NotificationCallback = std::function<ipc::MResult(const ipc::MDiagnosticsSignal&,
                                                          ipc::MDiagnosticsNotificationType)>;

  virtual ~IDiagnostics() = default;

  // Both throw Rpc::CommunicationException at the calling end: the service cannot be reached, or (a
  // request) knows no such value.
  virtual ipc::MResult SendSignal(const ipc::MDiagnosticsSignal& signal) = 0;
  virtual ipc::MDiagnosticsSignal ReceiveSignal(const ipc::MDiagnosticsRequest& request) = 0;

  // Replaces the callback; an empty one ends the subscription's effect. When this returns, no call
  // of the callback before it is under way (unless it was called from that callback).
  virtual void SetNotificationCallback(NotificationCallback callback) = 0;

  // Serving end: told by the RPC layer how many are subscribed, at each change, on any of its
  // threads. Must neither block nor call back.
  virtual void OnSubscribers(std::size_t /*count*/) {}
};
