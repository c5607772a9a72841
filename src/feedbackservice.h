// The feedback events that other processes ask for, as a service.
#pragma once

#include "platform/rpc/interfaces/feedback.h"
#include "src/ifeedbackclient.h"

class CFeedbackService : public IFeedback, public IFeedbackClient {
 public:
  // Calls the event callback and returns its answer; throws std::bad_function_call without one.
  ipc::MResult TriggerFeedbackEvent(const ipc::MFbEventType& event,
                                    const ipc::MInstanceType& instance) override;
};
