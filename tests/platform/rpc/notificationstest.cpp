// Notifications and their subscriptions between two hosts over real sockets.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"
#include "tests/platform/rpc/hosts.h"

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

}  // namespace
