// The lifecycle machine behind its bridge. Every action, and with "state 2" and "alive" every
// report, is a line of the log, so that its place among the machine's own lines shows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/log/log.h"
#include "statemachines/feedbackhsm.h"
#include "statemachines/hsmalive.h"
#include "statemachines/processcontrolservice.h"
#include "statemachines/utils/statemachinesutility.h"
#include "tests/support/logcapture.h"
#include "tests/support/manualclock.h"

class CLoggingHandler : public CHsmAlive<CFeedbackHsmActionHandlerBase> {
 public:
  explicit CLoggingHandler(std::shared_ptr<ISteadyClock> clock)
      : CWorker("test", std::move(clock)) {}
  ~CLoggingHandler() override { Stop(); }

  void IntDisableConnectors() override { LOG(Info, "IntDisableConnectors"); }
  void IntEnableConnectors() override { LOG(Info, "IntEnableConnectors"); }
  void IntInitialize() override {
    LOG(Info, "IntInitialize");
    Post<IntInitializingDone>();
  }
  void IntStopAliveTimer() override {
    LOG(Info, "IntStopAliveTimer");
    CHsmAlive::IntStopAliveTimer();
  }
  void IntStartAliveTimer() override {
    LOG(Info, "IntStartAliveTimer");
    CHsmAlive::IntStartAliveTimer();
  }
  void IntStartMonitoring() override { LOG(Info, "IntStartMonitoring"); }
  void IntStopMonitoring() override { LOG(Info, "IntStopMonitoring"); }
  void IntTriggerFeedbackEvent(const std::shared_ptr<ExtOnTriggerFeedbackEvent>& event) override {
    const auto& [type, instance] = event->GetPayload();
    LOG(Info, "feedback {} {}", static_cast<int>(type.event()),
        static_cast<int>(instance.instance()));
  }
  void IntUpdateErrorState(const std::shared_ptr<IntOnErrorChanged>& event) override {
    LOG(Info, "error {}", static_cast<int>(std::get<0>(event->GetPayload()).identifier()));
  }
};

struct CLifecycle {
  CLifecycle() {
    mService->ConnectReporters(
        [](const ipc::MState& state) { LOG(Info, "state {}", static_cast<int>(state.state())); },
        [] { LOG(Info, "alive"); });
  }

  // Actions and reports.
  std::vector<std::string> Actions() const {
    std::vector<std::string> lines;
    for (const auto& line : mLog.Lines()) {
      if (line.mLevel == Log::ELogLevel::EInfo) {
        lines.push_back(line.mText);
      }
    }
    return lines;
  }

  LogCapture mLog;
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  std::shared_ptr<CLoggingHandler> mHandler = std::make_shared<CLoggingHandler>(mClock);
  std::shared_ptr<CProcessControlService> mService = std::make_shared<CProcessControlService>();
  std::shared_ptr<CHsm<CFeedbackHsmActionHandlerBase>> mMachine =
      std::make_shared<CHsm<CFeedbackHsmActionHandlerBase>>(mHandler);
  CProcessControlBridge mBridge = ConnectIProcessControl(mHandler, mService, mMachine);
};
