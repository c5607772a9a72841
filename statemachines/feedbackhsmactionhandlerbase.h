// What the lifecycle machine asks of whoever carries it out.
#pragma once

#include <memory>

#include "statemachines/feedbackhsmevents.h"
#include "statemachines/hsmactionhandlerbase.h"

// Threads: the machine's thread calls, one action after the other. What an action throws ends the
// machine's Run; what IntInitialize throws ends the process.
class CFeedbackHsmActionHandlerBase : public CHsmActionHandlerBase {
 public:
  virtual void IntDisableConnectors() = 0;
  virtual void IntEnableConnectors() = 0;

  // Posts IntInitializingDone at its end.
  virtual void IntInitialize() = 0;

  virtual void IntStopAliveTimer() = 0;
  virtual void IntStartAliveTimer() = 0;
  virtual void IntStartMonitoring() = 0;
  virtual void IntStopMonitoring() = 0;

  // Only while the machine is Enabled.
  virtual void IntTriggerFeedbackEvent(const std::shared_ptr<ExtOnTriggerFeedbackEvent>& event) = 0;
  virtual void IntUpdateErrorState(const std::shared_ptr<IntOnErrorChanged>& event) = 0;
};
