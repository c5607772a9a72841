#include "src/feedbackservice.h"

ipc::MResult CFeedbackService::TriggerFeedbackEvent(const ipc::MFbEventType& event,
                                                    const ipc::MInstanceType& instance) {
  return GetEventCallback()(event, instance);
}
