// Unary calls between two hosts over real sockets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/rpc/communicationexception.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/support/eventually.h"

namespace {

using testing::HasSubstr;

ipc::MFbEventType Event(int event) {
  ipc::MFbEventType message;
  message.set_event(static_cast<ipc::EFbEventType>(event));
  return message;
}

template <typename Call>
std::string FailureOf(const Call& call) {
  try {
    call();
  } catch (const Rpc::CommunicationException& exception) {
    return exception.what();
  }
  return "no failure";
}

class AService : public testing::Test {
 protected:
  void Serve(ServedFeedback::Answer answer) {
    mServer.emplace(mDirectory, [&](Host& host) {
      host.AddService<IFeedback>("Feedback", std::make_shared<ServedFeedback>(std::move(answer)));
    });
  }

  SocketDirectory mDirectory;
  std::optional<RunningHost> mServer;
  RunningHost mClient{mDirectory};
};

TEST_F(AService, ThatIsNotThereFailsTheCallWithItsName) {
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  EXPECT_THAT(FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); }),
              testing::AllOf(HasSubstr("TriggerFeedbackEvent of \"Feedback\""),
                             HasSubstr("the service is not there")));
}

// Its server answers the probe while the call itself is still under way.
TEST_F(AService, ThatIsSlowIsUsedAgainAfterATimeLimit) {
  std::promise<void> release;
  Serve([released = release.get_future().share()](const auto&, const auto&) {
    released.wait();
    return ipc::MResult();
  });
  const auto slow = mClient->CreateClient<IFeedback>("Feedback");
  slow->SetTimeLimit(1);
  const auto failure = [&] {
    return FailureOf([&] { slow->GetInterface()->TriggerFeedbackEvent({}, {}); });
  };
  EXPECT_THAT(failure(), HasSubstr("no answer within 1000 ms"));
  release.set_value();
  EXPECT_TRUE(Eventually([&] { return failure() == "no failure"; }));
}

TEST_F(AService, ThatThrowsFailsItsCallerAndGoesOn) {
  Serve([](const auto& event, const auto&) -> ipc::MResult {
    if (event.event() == ipc::EFbEventTypeAuthFailure) {
      throw std::bad_function_call();
    }
    return ipc::MResult();
  });
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  EXPECT_THAT(
      FailureOf([&] { feedback->TriggerFeedbackEvent(Event(ipc::EFbEventTypeAuthFailure), {}); }),
      HasSubstr("bad_function_call"));
  EXPECT_EQ(feedback->TriggerFeedbackEvent({}, {}).result(), ipc::EResultOk);
}

TEST_F(AService, AnswersWhileAllButOneOfAConnectionsCallsAreBlocked) {
  std::promise<void> release;
  const auto released = release.get_future().share();
  const auto inside = std::make_shared<std::atomic<int>>(0);
  Serve([inside, released](const auto& event, const auto&) {
    if (event.event() == ipc::EFbEventTypeAuthSuccess) {
      ++*inside;
      released.wait();
    }
    return ipc::MResult();
  });
  const auto client = mClient->CreateClient<IFeedback>("Feedback");
  client->SetTimeLimit(60);
  const auto feedback = client->GetInterface();
  std::vector<std::future<ipc::MResult>> blocked;
  for (int i = 0; i < 31; ++i) {
    blocked.push_back(
        std::async(std::launch::async, [&] { return feedback->TriggerFeedbackEvent({}, {}); }));
  }
  EXPECT_EQ(feedback->TriggerFeedbackEvent(Event(ipc::EFbEventTypeIdentify), {}).result(),
            ipc::EResultOk);
  release.set_value();
  for (auto& each : blocked) {
    EXPECT_EQ(each.get().result(), ipc::EResultOk);
  }
  EXPECT_EQ(*inside, 31);
}

TEST_F(AService, ThatIsStoppingFailsCallsThatWaitForAPeer) {
  std::promise<void> release;
  std::promise<void> entered;
  // The call that was given up may still be served when the test has ended.
  Serve([&entered, released = release.get_future().share()](const auto&, const auto&) {
    entered.set_value();
    released.wait();
    return ipc::MResult();
  });
  const auto client = mClient->CreateClient<IFeedback>("Feedback");
  client->SetTimeLimit(3600);
  const auto feedback = client->GetInterface();
  auto call = std::async(std::launch::async, [&] {
    return FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); });
  });
  entered.get_future().wait();
  mClient->Stop();
  EXPECT_NE(call.get(), "no failure");
  EXPECT_THAT(FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); }),
              HasSubstr("this process is stopping"));
  release.set_value();
}

}  // namespace
