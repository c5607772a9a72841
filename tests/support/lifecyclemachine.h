// The lifecycle machine on a handler whose actions are lines of the log, so that their place among
// the machine's own lines shows.
#pragma once

#include <memory>

#include "platform/log/log.h"
#include "statemachines/feedbackhsm.h"
#include "statemachines/hsmalive.h"
#include "tests/support/manualclock.h"

class CLoggingHandler : public CHsmAlive<CFeedbackHsmActionHandlerBase> {
 public:
  using Base = CHsmAlive<CFeedbackHsmActionHandlerBase>;

  explicit CLoggingHandler(std::shared_ptr<ISteadyClock> clock = std::make_shared<ManualClock>())
      : CWorker("test", std::move(clock)) {
    ExtDisabledRsp = [] { LOG(Trace, "ExtDisabledRsp"); };
    ExtEnabledRsp = [] { LOG(Trace, "ExtEnabledRsp"); };
    ExtErrorRsp = [] { LOG(Trace, "ExtErrorRsp"); };
    ExtFatalErrorRsp = [] { LOG(Trace, "ExtFatalErrorRsp"); };
    ExtUninitializedRsp = [] { LOG(Trace, "ExtUninitializedRsp"); };
  }
  ~CLoggingHandler() override { Stop(); }

  void IntDisableConnectors() override { LOG(Trace, "IntDisableConnectors"); }
  void IntEnableConnectors() override { LOG(Trace, "IntEnableConnectors"); }
  void IntInitialize() override {
    LOG(Trace, "IntInitialize");
    Post<IntInitializingDone>();
  }
  void IntStopAliveTimer() override {
    LOG(Trace, "IntStopAliveTimer");
    Base::IntStopAliveTimer();
  }
  void IntStartAliveTimer() override {
    LOG(Trace, "IntStartAliveTimer");
    Base::IntStartAliveTimer();
  }
  void IntStartMonitoring() override { LOG(Trace, "IntStartMonitoring"); }
  void IntStopMonitoring() override { LOG(Trace, "IntStopMonitoring"); }
  void IntTriggerFeedbackEvent(const std::shared_ptr<ExtOnTriggerFeedbackEvent>& event) override {
    const auto& [type, instance] = event->GetPayload();
    LOG(Trace, "IntTriggerFeedbackEvent {} {}", static_cast<int>(type.event()),
        static_cast<int>(instance.instance()));
  }
  void IntUpdateErrorState(const std::shared_ptr<IntOnErrorChanged>& event) override {
    const auto& [signal] = event->GetPayload();
    LOG(Trace, "IntUpdateErrorState {}", static_cast<int>(signal.identifier()));
  }
};

using CLifecycleMachine = CHsm<CFeedbackHsmActionHandlerBase>;
