#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "statemachines/processcontrolservice.h"
#include "statemachines/utils/statemachinesutility.h"
#include "tests/support/lifecyclemachine.h"
#include "tests/support/logcapture.h"

namespace {

using namespace std::chrono_literals;
using Log::ELogLevel;

// The machine on a thread of its own behind the bridge; what the board controller hears are lines
// of the log at info level.
class ABridge : public testing::Test {
 protected:
  ABridge() {
    mService->ConnectReporters(
        [](const ipc::MState& state) { LOG(Info, "state {}", static_cast<int>(state.state())); },
        [] { LOG(Info, "alive"); });
    mHandler->Start();
  }

  void Run() {
    mRunner = std::thread([this] { mMachine->Run(); });
  }

  void Terminate() {
    EXPECT_EQ(PostAndWait<IntTerminate>(*mMachine).result(), ipc::EResultOk);
    mRunner.join();
  }

  // Each request is sent when the state before it has been reported.
  void ExpectRequest(ipc::MResult reply, ipc::EResult expected, const std::string& report) {
    EXPECT_EQ(reply.result(), expected);
    EXPECT_TRUE(mLog.WaitFor(ELogLevel::EInfo, report)) << report;
  }

  void Enable() {
    ExpectRequest(mService->Disable(), ipc::EResultOk, "state 2");
    ExpectRequest(mService->Enable(), ipc::EResultOk, "state 3");
    EXPECT_TRUE(mLog.WaitFor(ELogLevel::EInfo, "alive"));
  }

  std::vector<std::string> Heard() const {
    std::vector<std::string> lines;
    for (const auto& line : mLog.Lines()) {
      if (line.mLevel == ELogLevel::EInfo) {
        lines.push_back(line.mText);
      }
    }
    return lines;
  }

  LogCapture mLog;
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  std::shared_ptr<CLoggingHandler> mHandler = std::make_shared<CLoggingHandler>(mClock);
  std::shared_ptr<CProcessControlService> mService = std::make_shared<CProcessControlService>();
  std::shared_ptr<CLifecycleMachine> mMachine = std::make_shared<CLifecycleMachine>(mHandler);
  CProcessControlBridge mBridge = ConnectIProcessControl(mHandler, mService, mMachine);
  std::thread mRunner;
};

TEST_F(ABridge, TurnsRequestsIntoEventsAndEnteredStatesIntoReports) {
  Run();
  ExpectRequest(mService->Enable(), ipc::EResultIllegal, "state 1");
  Enable();
  EXPECT_EQ(PostAndWait<ExtError>(*mMachine).result(), ipc::EResultOk);
  EXPECT_TRUE(mLog.WaitFor(ELogLevel::EInfo, "state 2", 2));
  EXPECT_EQ(PostAndWait<IntFatalError>(*mMachine).result(), ipc::EResultOk);
  Terminate();
  EXPECT_THAT(Heard(), testing::ElementsAre("state 1", "state 2", "state 3", "alive", "state 4",
                                            "state 2", "state 5"));
  const char* const position = "(../statemachines/utils/statemachinesutility:";
  for (const auto& [call, count] :
       std::vector<std::pair<std::string, size_t>>{{"28) IEnableCall", 2},
                                                   {"32) IDisableCall", 1},
                                                   {"38) ExtUninitializedRsp", 1},
                                                   {"42) ExtDisabledRsp", 2},
                                                   {"47) ExtEnabledRsp", 1},
                                                   {"51) ExtErrorRsp", 1},
                                                   {"55) ExtFatalErrorRsp", 1},
                                                   {"59) ExtSendAlive", 1}}) {
    EXPECT_EQ(mLog.Count(ELogLevel::ETrace, position + call), count) << call;
  }
}

TEST_F(ABridge, SendsAliveEveryFourSecondsWhileEnabled) {
  const auto aliveAfter = [this](std::chrono::nanoseconds time) {
    mHandler->Sync();
    mClock->Advance(time);
    mHandler->Sync();
    return mLog.Count(ELogLevel::EInfo, "alive");
  };
  Run();
  Enable();
  EXPECT_EQ(aliveAfter(4s - 1ns), 1U);
  EXPECT_EQ(aliveAfter(1ns), 2U);
  EXPECT_EQ(aliveAfter(4s), 3U);
  ExpectRequest(mService->Disable(), ipc::EResultOk, "state 2");
  EXPECT_TRUE(mLog.WaitFor(ELogLevel::EInfo, "state 2", 2));
  EXPECT_EQ(aliveAfter(40s), 3U);
  Terminate();
}

TEST_F(ABridge, HandsPayloadsToTheMachineOnlyWhileItIsEnabled) {
  ipc::MFbEventType type;
  type.set_event(ipc::EFbEventTypeIdentify);
  ipc::MInstanceType instance;
  instance.set_instance(ipc::EInstanceTypeConnector1);
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(ipc::ESignalIdentifierChargeControlCpShort);
  const auto post = [&] {
    return std::pair(PostAndWait<ExtOnTriggerFeedbackEvent>(*mMachine, type, instance).result(),
                     PostAndWait<IntOnErrorChanged>(*mMachine, signal).result());
  };
  Run();
  EXPECT_EQ(post(), std::pair(ipc::EResultIllegal, ipc::EResultIllegal));
  Enable();
  EXPECT_EQ(post(), std::pair(ipc::EResultOk, ipc::EResultOk));
  Terminate();
  EXPECT_EQ(mLog.Count(ELogLevel::ETrace, "IntTriggerFeedbackEvent 3 1"), 1U);
  EXPECT_EQ(mLog.Count(ELogLevel::ETrace, "IntUpdateErrorState 1002"), 1U);
}

TEST_F(ABridge, TellsWaitingRequestsThatTheirEventWasDropped) {
  Run();
  Terminate();
  auto waiting = std::async(std::launch::async, [this] { return mService->Enable(); });
  EXPECT_TRUE(mLog.WaitFor(ELogLevel::ETrace, "IEnableCall"));
  mMachine->DropQueuedEvents();
  EXPECT_THROW(waiting.get(), std::future_error);
}

TEST_F(ABridge, LeavesNothingBehindWhenItIsTakenDown) {
  Run();
  Enable();
  Terminate();
  const std::weak_ptr<CLoggingHandler> handler = std::exchange(mHandler, nullptr);
  const std::weak_ptr<CLifecycleMachine> machine = std::exchange(mMachine, nullptr);
  EXPECT_FALSE(handler.expired());
  mBridge.reset();
  EXPECT_TRUE(handler.expired());
  EXPECT_TRUE(machine.expired());
  EXPECT_THROW(mService->Enable(), std::bad_function_call);
  EXPECT_THROW(mService->Disable(), std::bad_function_call);
}

TEST(AProcessControlService, SaysNothingToNobody) {
  CProcessControlService service;
  service.ReportState({});
  EXPECT_THROW(service.SendAlive(), std::bad_function_call);
}

}  // namespace
