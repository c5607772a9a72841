#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "tests/platform/rpc/hosts.h"
#include "tests/virtualcharger/peers/events.h"
#include "virtualcharger/peers/virtualsessionmanager.h"

namespace {

using testing::Optional;

constexpr auto kName = "SessionManager";

class AVirtualSessionManager : public testing::Test {
 protected:
  std::shared_ptr<CVirtualSessionManager> Serve(int state) {
    auto service = std::make_shared<CVirtualSessionManager>(state, Into(mEvents));
    mServer.emplace(mDirectory,
                    [&](Host& host) { host.AddService<ISessionManager>(kName, service); });
    return service;
  }

  void Subscribe(std::function<void(int)> handler) {
    mClient.emplace(mDirectory);
    mSessionManager = mClient->Client<ISessionManager>(kName);
    mSessionManager->SetConnectorStateCallback(
        [handler = std::move(handler)](const ipc::MConnectorState& state) {
          handler(state.state());
        });
  }

  // Before the hosts: used by callbacks until the hosts have stopped.
  Arrivals<std::string> mEvents;
  Arrivals<int> mHeard;
  std::promise<void> mRelease;
  const SocketDirectory mDirectory;
  std::optional<RunningHost> mServer;
  std::optional<RunningHost> mClient;
  std::shared_ptr<ISessionManager> mSessionManager;
};

TEST_F(AVirtualSessionManager, TellsANewSubscriberTheStateThatItBeganWith) {
  Serve(6);
  Subscribe([this](int state) { mHeard.Add(state); });
  EXPECT_THAT(mHeard.Next(), Optional(6));
  EXPECT_EQ(mSessionManager->GetConnectorInfo({}).state().state(), ipc::EConnectorStateCharging);
}

TEST_F(AVirtualSessionManager, CountsItsSubscribers) {
  Serve(1);
  Subscribe([](int) {});
  EXPECT_THAT(mEvents.Next(), Optional(std::string("subscribers 1")));
  mClient.reset();
  EXPECT_THAT(mEvents.Next(), Optional(std::string("subscribers 0")));
}

TEST_F(AVirtualSessionManager, IsLateWithASubscriberThatDoesNotReply) {
  const auto service = Serve(1);
  Subscribe([this](int state) {
    mHeard.Add(state);
    if (state != 1) mRelease.get_future().wait();
  });
  ASSERT_THAT(mHeard.Next(), Optional(1));
  EXPECT_EQ(service->SetConnectorState(5), kOutcomeLate);
  mRelease.set_value();
}

TEST_F(AVirtualSessionManager, AgreesToAnAuthorizationAndReportsIt) {
  Serve(1);
  mClient.emplace(mDirectory);
  ipc::MAuthorizeRequest request;
  request.set_id_token("card 7");
  EXPECT_EQ(mClient->Client<ISessionManager>(kName)->Authorize(request).result(), ipc::EResultOk);
  EXPECT_THAT(mEvents.Next(), Optional(std::string("authorize card 7")));
}

}  // namespace
