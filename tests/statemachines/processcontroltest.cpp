#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "tests/statemachines/lifecyclefixture.h"

namespace {

using namespace std::chrono_literals;
using Log::ELogLevel;

class ABridge : public testing::Test, protected CLifecycle {
 protected:
  ABridge() {
    mHandler->Start();
    mRunner = std::thread([this] { mMachine->Run(); });
  }

  template <typename Event, typename... Payload>
  void Post(ipc::EResult expected, const Payload&... payload) {
    EXPECT_EQ(PostAndWait<Event>(*mMachine, payload...).result(), expected);
  }

  void WaitFor(const std::string& line, size_t count = 1) const {
    EXPECT_TRUE(mLog.WaitFor(ELogLevel::EInfo, line, count)) << line;
  }

  // The first ones of all.
  void Enable() {
    EXPECT_EQ(mService->Disable().result(), ipc::EResultOk);
    WaitFor("state 2");
    EXPECT_EQ(mService->Enable().result(), ipc::EResultOk);
    WaitFor("alive");
  }

  void Terminate() {
    Post<IntTerminate>(ipc::EResultOk);
    mRunner.join();
  }

  std::thread mRunner;
};

TEST_F(ABridge, TurnsRequestsIntoEventsAndEnteredStatesIntoReports) {
  EXPECT_EQ(mService->Enable().result(), ipc::EResultIllegal);
  Enable();
  Post<ExtError>(ipc::EResultOk);
  WaitFor("state 2", 2);
  mService->Enable();
  WaitFor("alive", 2);
  ipc::MFbEventType type;
  type.set_event(ipc::EFbEventTypeIdentify);
  ipc::MInstanceType instance;
  instance.set_instance(ipc::EInstanceTypeConnector1);
  Post<ExtOnTriggerFeedbackEvent>(ipc::EResultOk, type, instance);
  mService->Disable();
  WaitFor("state 2", 3);
  Post<IntFatalError>(ipc::EResultOk);
  Terminate();
  using Lines = std::vector<std::string>;
  const Lines enter{"IntStartMonitoring", "IntEnableConnectors", "state 3", "IntStartAliveTimer",
                    "alive"};
  const Lines leave{"IntDisableConnectors", "IntStopMonitoring", "IntStopAliveTimer"};
  Lines expected;
  for (const Lines& step :
       {Lines{"state 1", "IntInitialize", "state 2"}, enter, leave, Lines{"state 4", "state 2"},
        enter, Lines{"feedback 3 1"}, leave, Lines{"state 2", "state 5"}}) {
    expected.insert(expected.end(), step.begin(), step.end());
  }
  EXPECT_EQ(Actions(), expected);
  EXPECT_EQ(
      mLog.Count(ELogLevel::ETrace, "(../statemachines/utils/statemachinesutility:51) ExtErrorRsp"),
      1U);
}

TEST_F(ABridge, SendsAliveEveryFourSecondsWhileEnabled) {
  const auto aliveAfter = [this](std::chrono::nanoseconds time) {
    mHandler->Sync();
    mClock->Advance(time);
    mHandler->Sync();
    return mLog.Count(ELogLevel::EInfo, "alive");
  };
  Enable();
  EXPECT_EQ(aliveAfter(4s - 1ns), 1U);
  EXPECT_EQ(aliveAfter(1ns), 2U);
  Terminate();
  EXPECT_EQ(aliveAfter(40s), 2U);
}

TEST_F(ABridge, LetsEverybodyGoWhenItIsTakenDown) {
  Enable();
  Terminate();
  auto waiting = std::async(std::launch::async, [this] { return mService->Enable(); });
  EXPECT_TRUE(mLog.WaitFor(ELogLevel::ETrace, "IEnableCall", 2));
  mMachine->DropQueuedEvents();
  EXPECT_THROW(waiting.get(), std::future_error);

  const std::weak_ptr<CLoggingHandler> handler = std::exchange(mHandler, nullptr);
  const std::weak_ptr<IHsmInterface> machine = std::exchange(mMachine, nullptr);
  mBridge.reset();
  EXPECT_TRUE(handler.expired());
  EXPECT_TRUE(machine.expired());
  EXPECT_THROW(mService->Enable(), std::bad_function_call);
}

TEST(AProcessControlService, SaysNothingToNobody) {
  CProcessControlService service;
  service.ReportState({});
  EXPECT_THROW(service.SendAlive(), std::bad_function_call);
  EXPECT_THROW(service.Disable(), std::bad_function_call);
}

}  // namespace
