// Feedback events that other processes ask for.
#pragma once

#include "platform/ipc/feedback.pb.h"

// Threads: calls arrive on any of the RPC layer's threads at once.
class IFeedback {
 public:
  virtual ~IFeedback() = default;

  // Throws Rpc::CommunicationException at the calling end when the service cannot be reached.
  virtual ipc::MResult TriggerFeedbackEvent(const ipc::MFbEventType& event,
                                            const ipc::MInstanceType& instance) = 0;
};
