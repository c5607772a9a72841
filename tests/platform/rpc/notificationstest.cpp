// Notifications and their subscriptions between two hosts over real sockets.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/log.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/support/fakediagnostics.h"

namespace {

class ASubscription : public testing::Test {
 protected:
  void StartSessionManager() {
    mSessionManager = std::make_shared<ServedSessionManager>();
    mServer.emplace(mDirectory, [&](Host& host) {
      host.AddService<ISessionManager>("SessionManager", mSessionManager);
    });
  }

  // The subscriber keeps what it hears and replies when its gate lets it.
  void Subscribe() {
    mClient.emplace(mDirectory, [&](Host& host) {
      mSubscribed = host.CreateClient<ISessionManager>("SessionManager")->GetInterface();
      mSubscribed->SetConnectorStateCallback(
          [this](const ipc::MConnectorState& state) { mHeard.Add(state.state()); });
    });
  }

  SocketDirectory mDirectory;
  Arrivals<int> mHeard;
  std::shared_ptr<ServedSessionManager> mSessionManager;
  std::shared_ptr<ISessionManager> mSubscribed;
  std::optional<RunningHost> mServer;
  std::optional<RunningHost> mClient;
};

TEST_F(ASubscription, BeginsWithThePresentState) {
  StartSessionManager();
  mSessionManager->Announce(3);
  mSessionManager->Announce(6);
  Subscribe();
  EXPECT_EQ(mHeard.Next(), 6);
}

TEST_F(ASubscription, HearsEachChangeOnceAndInOrder) {
  StartSessionManager();
  mSessionManager->Announce(1000);
  Subscribe();
  ASSERT_EQ(mHeard.Next(), 1000);
  for (int state = 0; state < 300; ++state) {
    mSessionManager->Announce(state);
  }
  for (int state = 0; state < 300; ++state) {
    ASSERT_EQ(mHeard.Next(), state);
  }
}

TEST_F(ASubscription, AnnouncementsReturnWhenTheSubscriberHasHandledThem) {
  StartSessionManager();
  Subscribe();
  mSessionManager->Announce(0);
  ASSERT_TRUE(mHeard.Next());
  std::atomic<bool> handled = false;
  mSubscribed->SetConnectorStateCallback([&](const ipc::MConnectorState&) { handled = true; });
  mSessionManager->Announce(6);
  EXPECT_TRUE(handled);
}

class LoggerOnAFullDisk : public Rpc::ILogger {
 public:
  void Critical(const std::string& message) override { Error(message); }
  void Error(const std::string&) override { throw std::runtime_error("no space left"); }
  void Warning(const std::string& message) override { Error(message); }
  void Info(const std::string& message) override { Error(message); }
  void Debug(const std::string& message) override { Error(message); }
  void Trace(const std::string& message) override { Error(message); }
};

TEST_F(ASubscription, StartsWhenTheServiceAppearsAndIsRenewedWhenItComesBackWhateverTheLoggerDoes) {
  for (const auto& logger :
       {std::shared_ptr<LoggerOnAFullDisk>(), std::make_shared<LoggerOnAFullDisk>()}) {
    Rpc::SetLogger(logger);
    Subscribe();
    for (const int state : {4, 5, 6}) {
      StartSessionManager();
      mSessionManager->Announce(state);
      EXPECT_EQ(mHeard.Next(), state);
      mServer.reset();
    }
    mClient.reset();
  }
  Rpc::SetLogger(nullptr);
}

TEST_F(ASubscription, GoesOnAfterACallbackThatThrew) {
  StartSessionManager();
  mSessionManager->Announce(9);
  Subscribe();
  ASSERT_EQ(mHeard.Next(), 9);
  mSubscribed->SetConnectorStateCallback([this](const ipc::MConnectorState& state) {
    mHeard.Add(state.state());
    if (state.state() == 1) {
      throw std::runtime_error("cannot show it");
    }
  });
  mSessionManager->Announce(0);
  mSessionManager->Announce(1);
  mSessionManager->Announce(2);
  EXPECT_EQ(mHeard.Next(), 0);
  EXPECT_EQ(mHeard.Next(), 1);
  EXPECT_EQ(mHeard.Next(), 2);
}

TEST_F(ASubscription, CallbackIsNotUnderWayWhenItsReplacementReturns) {
  StartSessionManager();
  Subscribe();
  mSessionManager->Announce(0);
  ASSERT_TRUE(mHeard.Next());
  std::atomic<bool> alive = true;
  std::atomic<bool> ranDead = false;
  mSubscribed->SetConnectorStateCallback([&](const ipc::MConnectorState&) {
    mHeard.Add(1);
    std::this_thread::yield();
    ranDead = ranDead || !alive;
  });
  auto announcing = std::async(std::launch::async, [&] {
    for (int i = 0; i < 200; ++i) {
      mSessionManager->Announce(i);
    }
  });
  ASSERT_TRUE(mHeard.Next());
  mSubscribed->SetConnectorStateCallback({});
  alive = false;
  announcing.get();
  EXPECT_FALSE(ranDead);
}

TEST_F(ASubscription, EndsWithItsOwnerWhileANotificationWaitsForTheThreadThatNeverRuns) {
  StartSessionManager();
  mSessionManager->Announce(6);
  Host host(mDirectory.Store());
  auto subscribed = host.CreateClient<ISessionManager>("SessionManager")->GetInterface();
  subscribed->SetConnectorStateCallback([](const ipc::MConnectorState&) { FAIL(); });
  // Returns at once until the subscription stands, then waits for a reply that never comes.
  EXPECT_THROW(
      for (;;) { mSessionManager->Announce(5); }, Rpc::CommunicationException);
  subscribed.reset();
}

TEST_F(ASubscription, DoesNotHoldUpTheServiceWhenItDoesNotReply) {
  StartSessionManager();
  std::promise<void> release;
  const auto released = release.get_future().share();
  Subscribe();
  mSessionManager->Announce(0);
  ASSERT_TRUE(mHeard.Next());
  mSubscribed->SetConnectorStateCallback([&, released](const ipc::MConnectorState& state) {
    mHeard.Add(state.state());
    released.wait();
  });
  Arrivals<int> healthy;
  std::shared_ptr<ISessionManager> other;
  RunningHost second(mDirectory, [&](Host& host) {
    other = host.CreateClient<ISessionManager>("SessionManager")->GetInterface();
    other->SetConnectorStateCallback(
        [&](const ipc::MConnectorState& state) { healthy.Add(state.state()); });
  });
  EXPECT_EQ(healthy.Next(), 0);
  EXPECT_THROW(mSessionManager->Announce(5), Rpc::CommunicationException);
  EXPECT_EQ(healthy.Next(), 5);
  release.set_value();
  EXPECT_EQ(mHeard.Next(), 5);
}

class DiagnosticsNotifications : public testing::Test {
 protected:
  static ipc::MDiagnosticsSignal Error(int identifier, bool active) {
    ipc::MDiagnosticsSignal signal;
    signal.set_identifier(static_cast<ipc::ESignalIdentifier>(identifier));
    signal.add_data()->set_bool_value(active);
    return signal;
  }

  std::optional<ipc::MResult> Notify(const ipc::MDiagnosticsSignal& signal) {
    return mService->Notify(signal, ipc::MDiagnosticsNotificationType::EError);
  }

  // Until the end of what it returns.
  [[nodiscard]] RunningHost Subscribe(const IDiagnostics::NotificationCallback& callback) {
    return RunningHost(mDirectory, [&](Host& host) {
      mSubscribed = host.CreateClient<IDiagnostics>("Diagnostics")->GetInterface();
      mSubscribed->SetNotificationCallback(callback);
    });
  }

  SocketDirectory mDirectory;
  std::shared_ptr<CFakeDiagnostics> mService = std::make_shared<CFakeDiagnostics>();
  RunningHost mServer{
      mDirectory, [this](Host& host) { host.AddService<IDiagnostics>("Diagnostics", mService); }};
  std::shared_ptr<IDiagnostics> mSubscribed;
};

TEST_F(DiagnosticsNotifications, CarryTheSubscribersReplyBack) {
  Arrivals<int> heard;
  const auto subscriber = Subscribe([&](const ipc::MDiagnosticsSignal& signal, const auto&) {
    heard.Add(signal.identifier());
    ipc::MResult result;
    result.set_result(signal.identifier() == 1004 ? ipc::EResultIllegal : ipc::EResultOk);
    return result;
  });
  Notify(Error(1000, true));
  ASSERT_EQ(heard.Next(), 1000);
  EXPECT_EQ(Notify(Error(1002, true))->result(), ipc::EResultOk);
  EXPECT_EQ(Notify(Error(1004, true))->result(), ipc::EResultIllegal);
}

TEST_F(DiagnosticsNotifications, TellANewSubscriberTheLastStateOfEachSignalInOrder) {
  Notify(Error(1004, true));
  Notify(Error(1002, true));
  Notify(Error(1003, true));
  Notify(Error(1004, false));
  Arrivals<std::pair<int, bool>> heard;
  const auto subscriber = Subscribe([&](const ipc::MDiagnosticsSignal& signal, const auto&) {
    heard.Add({signal.identifier(), signal.data(0).bool_value()});
    return ipc::MResult();
  });
  EXPECT_EQ(heard.Next(), std::pair(1002, true));
  EXPECT_EQ(heard.Next(), std::pair(1003, true));
  EXPECT_EQ(heard.Next(), std::pair(1004, false));
}

TEST_F(DiagnosticsNotifications, ThatMakeNoSenseAreRefusedBeforeTheSubscriberSeesThem) {
  Arrivals<int> heard;
  const auto subscriber = Subscribe([&](const ipc::MDiagnosticsSignal& signal, const auto&) {
    heard.Add(signal.identifier());
    return ipc::MResult();
  });
  Notify(Error(1000, true));
  ASSERT_EQ(heard.Next(), 1000);

  auto withoutValue = Error(1001, true);
  withoutValue.clear_data();
  auto elsewhere = Error(1001, true);
  elsewhere.mutable_instance()->set_instance(ipc::EInstanceTypeConnector2);
  for (const auto& signal : {withoutValue, elsewhere}) {
    EXPECT_EQ(Notify(signal)->result(), ipc::EResultIllegal);
  }
  Notify(Error(1002, true));
  EXPECT_EQ(heard.Next(), 1002);
}

TEST(GenericControl, TellsItsWatchersTheStateAndThatItIsAlive) {
  class Control : public IGenericControl {
   public:
    ipc::MResult Enable() override { return {}; }
    ipc::MResult Disable() override { return {}; }
    void ReportState(const ipc::MState& state) override { mStateReporter(state); }
    void SendAlive() override { mAliveReporter(); }
    void Report(ipc::EState state) {
      ipc::MState message;
      message.set_state(state);
      ReportState(message);
    }
  };
  SocketDirectory directory;
  const auto control = std::make_shared<Control>();
  RunningHost server(directory,
                     [&](Host& host) { host.AddService<IGenericControl>("Control", control); });
  control->Report(ipc::EStateUninitialized);
  control->Report(ipc::EStateDisabled);

  Arrivals<int> states;
  Arrivals<int> alive;
  std::shared_ptr<IGenericControl> watched;
  RunningHost client(directory, [&](Host& host) {
    watched = host.CreateClient<IGenericControl>("Control")->GetInterface();
    watched->ConnectReporters([&](const ipc::MState& state) { states.Add(state.state()); },
                              [&] { alive.Add(1); });
  });
  EXPECT_EQ(states.Next(), ipc::EStateDisabled);
  control->Report(ipc::EStateEnabled);
  control->Report(ipc::EStateEnabled);
  EXPECT_EQ(states.Next(), ipc::EStateEnabled);
  EXPECT_EQ(states.Next(), ipc::EStateEnabled);

  // An alive message is for those who listen now; the subscription may still be on its way.
  std::atomic<bool> stop = false;
  std::thread sender([&] {
    while (!stop) {
      control->SendAlive();
      std::this_thread::yield();
    }
  });
  EXPECT_TRUE(alive.Next());
  stop = true;
  sender.join();
}

}  // namespace
