#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/rpc/interfaces/genericcontrol.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/virtualcharger/peers/events.h"
#include "virtualcharger/peers/virtualboardcontroller.h"

namespace {

using testing::Optional;
using testing::StartsWith;

// A daemon that takes a disable request and no enable request.
class ServedControl : public IGenericControl {
 public:
  ipc::MResult Enable() override {
    ipc::MResult result;
    result.set_result(ipc::EResultIllegal);
    result.set_text("not now");
    return result;
  }
  ipc::MResult Disable() override {
    ipc::MState disabled;
    disabled.set_state(ipc::EStateDisabled);
    ReportState(disabled);
    return {};
  }
  void ReportState(const ipc::MState& state) override { mStateReporter(state); }
  void SendAlive() override { mAliveReporter(); }
};

class ServedLog : public ILogConfig {
 public:
  explicit ServedLog(Arrivals<ipc::ELogLevel>& levels) : mLevels(levels) {}
  ipc::MResult SetLogConfig(const ipc::MLogConfig& config) override {
    mLevels.Add(config.level());
    return {};
  }
  ipc::MLogConfig GetLogConfig() override { return {}; }

 private:
  Arrivals<ipc::ELogLevel>& mLevels;
};

class AVirtualBoardController : public testing::Test {
 protected:
  void Serve() {
    mServer.emplace(mDirectory, [this](Host& host) {
      host.AddService<IGenericControl>("FeedbackGenCtrl", mControl);
      host.AddService<ILogConfig>("FeedbackLog", std::make_shared<ServedLog>(mLevels));
      host.AddService<IFeedback>(
          "Feedback", std::make_shared<ServedFeedback>([this](const ipc::MFbEventType& event,
                                                              const ipc::MInstanceType& instance) {
            mTriggered.Add({event.event(), instance.instance()});
            return ipc::MResult();
          }));
    });
  }

  void Connect() {
    mClient.emplace(mDirectory, [this](Host& host) {
      mController.emplace(host.CreateClient<IGenericControl>("FeedbackGenCtrl")->GetInterface(),
                          host.CreateClient<IFeedback>("Feedback")->GetInterface(),
                          host.CreateClient<ILogConfig>("FeedbackLog")->GetInterface(),
                          Into(mEvents));
    });
  }

  Arrivals<std::string> mEvents;
  Arrivals<std::pair<int, int>> mTriggered;
  Arrivals<ipc::ELogLevel> mLevels;
  const SocketDirectory mDirectory;
  const std::shared_ptr<ServedControl> mControl = std::make_shared<ServedControl>();
  std::optional<RunningHost> mServer;
  std::optional<CVirtualBoardController> mController;
  std::optional<RunningHost> mClient;
};

TEST_F(AVirtualBoardController, TellsTheDaemonsVerdictsAndReports) {
  Serve();
  Connect();
  EXPECT_EQ(mController->Enable(), "refused not now");
  EXPECT_EQ(mController->Disable(), kOutcomeOk);
  EXPECT_THAT(mEvents.Next(), Optional(std::string("state 2")));
  EXPECT_EQ(mController->Trigger(42), kOutcomeOk);
  EXPECT_EQ(mController->SetLogLevel(ipc::ELogLevelDebug), kOutcomeOk);
  EXPECT_THAT(mLevels.Next(), Optional(ipc::ELogLevelDebug));
  EXPECT_THAT(mTriggered.Next(), Optional(std::pair(42, 1)));
}

TEST_F(AVirtualBoardController, SaysThatNoDaemonIsThereAndFindsOneThatComes) {
  Connect();
  EXPECT_THAT(mController->Disable(), StartsWith(std::string(kOutcomeUnreachable)));
  EXPECT_THAT(mController->Trigger(0), StartsWith(std::string(kOutcomeUnreachable)));
  Serve();
  ipc::MState state;
  state.set_state(ipc::EStateUninitialized);
  mControl->ReportState(state);
  EXPECT_THAT(mEvents.Next(), Optional(std::string("state 1")));
}

}  // namespace
