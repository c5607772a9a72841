// Unary calls between two hosts over real sockets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <vector>

#include "platform/rpc/bordercheck.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "platform/rpc/interfaces/meter.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/platform/rpc/rawcall.h"
#include "tests/support/fakediagnostics.h"

namespace {

using testing::HasSubstr;

ipc::MResult Result(ipc::EResult code, const std::string& text = {}) {
  ipc::MResult result;
  result.set_result(code);
  result.set_text(text);
  return result;
}

ipc::MFbEventType Event(int event) {
  ipc::MFbEventType message;
  message.set_event(static_cast<ipc::EFbEventType>(event));
  return message;
}

ipc::MInstanceType Instance(int instance) {
  ipc::MInstanceType message;
  message.set_instance(static_cast<ipc::EInstanceType>(instance));
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

TEST_F(AService, CarriesRequestsAndAnswersUnchanged) {
  class LogConfig : public ILogConfig {
   public:
    ipc::MResult SetLogConfig(const ipc::MLogConfig& config) override {
      const std::lock_guard lock(mMutex);
      mConfig = config;
      return Result(ipc::EResultOk);
    }
    ipc::MLogConfig GetLogConfig() override {
      const std::lock_guard lock(mMutex);
      return mConfig;
    }

   private:
    std::mutex mMutex;
    ipc::MLogConfig mConfig;
  };
  class Meter : public IMeter {
   public:
    ipc::MResult SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) override {
      return Result(ipc::EResultOk, std::to_string(brightness.percentage()));
    }
  };
  class Control : public IGenericControl {
   public:
    ipc::MResult Enable() override { return Result(ipc::EResultOk, "enabled"); }
    ipc::MResult Disable() override { return Result(ipc::EResultIllegal, "not now"); }
    void ReportState(const ipc::MState&) override {}
    void SendAlive() override {}
  };
  const auto diagnostics = std::make_shared<CFakeDiagnostics>();
  mServer.emplace(mDirectory, [&](Host& host) {
    host.AddService<IFeedback>(
        "Feedback", std::make_shared<ServedFeedback>([](const auto& event, const auto& instance) {
          return Result(ipc::EResultOk,
                        std::to_string(event.event()) + "/" + std::to_string(instance.instance()));
        }));
    host.AddService<ILogConfig>("Log", std::make_shared<LogConfig>());
    host.AddService<IMeter>("Meter1", std::make_shared<Meter>());
    host.AddService<IGenericControl>("Control", std::make_shared<Control>());
    host.AddService<IDiagnostics>("Diagnostics", diagnostics);
    host.AddService<ISessionManager>("SessionManager", std::make_shared<ServedSessionManager>());
  });

  EXPECT_EQ(mClient.Client<IFeedback>("Feedback")
                ->TriggerFeedbackEvent(Event(ipc::EFbEventTypeIdentify), Instance(1))
                .text(),
            "3/1");

  const auto log = mClient.Client<ILogConfig>("Log");
  ipc::MLogConfig config;
  config.set_level(ipc::ELogLevelTrace);
  config.set_console(true);
  log->SetLogConfig(config);
  EXPECT_EQ(log->GetLogConfig().SerializeAsString(), config.SerializeAsString());

  ipc::MDisplayBrightness brightness;
  brightness.set_percentage(42);
  EXPECT_EQ(mClient.Client<IMeter>("Meter1")->SetDisplayBrightness(brightness).text(), "42");

  const auto control = mClient.Client<IGenericControl>("Control");
  EXPECT_EQ(control->Enable().text(), "enabled");
  EXPECT_EQ(control->Disable().result(), ipc::EResultIllegal);

  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(ipc::ESignalIdentifierLedState);
  signal.add_data()->set_string_value("Green/On");
  signal.mutable_timestamp()->set_seconds(1234567890123);
  diagnostics->Hold(signal);
  const auto diagnosticsClient = mClient.Client<IDiagnostics>("Diagnostics");
  EXPECT_EQ(diagnosticsClient->SendSignal(signal).result(), ipc::EResultOk);
  ipc::MDiagnosticsRequest request;
  request.set_identifier(ipc::ESignalIdentifierLedState);
  EXPECT_EQ(diagnosticsClient->ReceiveSignal(request).SerializeAsString(),
            signal.SerializeAsString());
  EXPECT_EQ(diagnostics->Sent().at(0).SerializeAsString(), signal.SerializeAsString());

  const auto sessionManager = mClient.Client<ISessionManager>("SessionManager");
  EXPECT_EQ(sessionManager->GetConnectorInfo(Instance(1)).session().session_id(), "session 1");
  ipc::MAuthorizeRequest authorize;
  authorize.set_id_token("token");
  EXPECT_EQ(sessionManager->Authorize(authorize).text(), "token");
}

TEST_F(AService, ThatIsNotThereFailsTheCallWithItsName) {
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  EXPECT_THAT(FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); }),
              testing::AllOf(HasSubstr("TriggerFeedbackEvent of \"Feedback\""),
                             HasSubstr("the service is not there")));
}

TEST_F(AService, IsReachedAgainWhenItComesBack) {
  const auto answer = [](const auto&, const auto&) { return Result(ipc::EResultOk, "back"); };
  Serve(answer);
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  feedback->TriggerFeedbackEvent({}, {});
  mServer.reset();
  EXPECT_NE(FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); }), "no failure");

  Serve(answer);
  const auto limit = std::chrono::steady_clock::now() + kGenerous;
  std::string failure = "not tried";
  while (failure != "no failure" && std::chrono::steady_clock::now() < limit) {
    failure = FailureOf([&] { feedback->TriggerFeedbackEvent({}, {}); });
  }
  EXPECT_EQ(failure, "no failure");
}

TEST_F(AService, ThatHangsCostsOneTimeLimitAndIsUsedAgainWhenItAnswers) {
  std::promise<void> release;
  const auto released = release.get_future().share();
  Serve([released](const auto&, const auto&) {
    released.wait();
    return Result(ipc::EResultOk);
  });
  // A process that is stopped answers nothing at all, health checks included: here a listener that
  // nobody accepts from stands in for it.
  class HangingListener {
   public:
    explicit HangingListener(const std::string& path)
        : mDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      path.copy(address.sun_path, sizeof(address.sun_path) - 1);
      EXPECT_EQ(bind(mDescriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
      EXPECT_EQ(listen(mDescriptor, 8), 0);
    }
    ~HangingListener() { close(mDescriptor); }

   private:
    const int mDescriptor;
  } hanging(mDirectory.Socket("Meter1"));

  const auto client = mClient->CreateClient<IMeter>("Meter1");
  client->SetTimeLimit(1);
  const auto meter = client->GetInterface();
  EXPECT_THAT(FailureOf([&] { meter->SetDisplayBrightness({}); }),
              HasSubstr("no answer within 1000 ms"));
  EXPECT_THAT(FailureOf([&] { meter->SetDisplayBrightness({}); }),
              HasSubstr("the service does not answer"));

  // Slow is not hung: its server answers the probe while the call itself is still under way.
  const auto slow = mClient->CreateClient<IFeedback>("Feedback");
  slow->SetTimeLimit(1);
  EXPECT_THAT(FailureOf([&] { slow->GetInterface()->TriggerFeedbackEvent({}, {}); }),
              HasSubstr("no answer within 1000 ms"));
  release.set_value();
  const auto limit = std::chrono::steady_clock::now() + kGenerous;
  std::string failure = "not tried";
  while (failure != "no failure" && std::chrono::steady_clock::now() < limit) {
    failure = FailureOf([&] { slow->GetInterface()->TriggerFeedbackEvent({}, {}); });
  }
  EXPECT_EQ(failure, "no failure");
}

TEST_F(AService, ThatThrowsFailsItsCallerAndGoesOn) {
  Serve([](const auto& event, const auto&) -> ipc::MResult {
    if (event.event() == ipc::EFbEventTypeAuthFailure) {
      throw std::bad_function_call();
    }
    return Result(ipc::EResultOk);
  });
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  EXPECT_THAT(
      FailureOf([&] { feedback->TriggerFeedbackEvent(Event(ipc::EFbEventTypeAuthFailure), {}); }),
      HasSubstr("bad_function_call"));
  EXPECT_EQ(feedback->TriggerFeedbackEvent({}, {}).result(), ipc::EResultOk);
}

TEST_F(AService, RefusesWhatItsHandlerCouldNotTakeNamingTheField) {
  const auto calls = std::make_shared<std::atomic<int>>(0);
  Serve([calls](const auto&, const auto&) {
    ++*calls;
    return Result(ipc::EResultOk);
  });
  const auto feedback = mClient.Client<IFeedback>("Feedback");
  for (const int instance : {2, 7, -1}) {
    EXPECT_THAT(FailureOf([&] { feedback->TriggerFeedbackEvent({}, Instance(instance)); }),
                HasSubstr("instance: " + std::to_string(instance)));
  }
  EXPECT_EQ(*calls, 0);
}

TEST_F(AService, RefusesAMessageOverTheLimitAndServesTheNextOne) {
  mServer.emplace(mDirectory, [&](Host& host) {
    host.AddService<ISessionManager>("SessionManager", std::make_shared<ServedSessionManager>());
  });
  const auto sessionManager = mClient.Client<ISessionManager>("SessionManager");
  ipc::MAuthorizeRequest request;
  for (const size_t size : {size_t{64} * 1024 + 1, size_t{50} * 1024 * 1024}) {
    request.set_id_token(std::string(size, 'x'));
    EXPECT_NE(FailureOf([&] { sessionManager->Authorize(request); }), "no failure");
  }
  request.set_id_token("short");
  EXPECT_EQ(sessionManager->Authorize(request).text(), "short");
}

TEST_F(AService, SurvivesBytesThatAreNoMessage) {
  const auto calls = std::make_shared<std::atomic<int>>(0);
  Serve([calls](const auto&, const auto&) {
    ++*calls;
    return Result(ipc::EResultOk);
  });
  for (const std::string& bytes : {std::string("\xff\xff\xff\xff\xff"), std::string(1000, '\0'),
                                   std::string("\x0a\x7f"), std::string("\x08\xff")}) {
    EXPECT_FALSE(
        CallWithBytes(mDirectory.Socket("Feedback"), "/ipc.Feedback/TriggerFeedbackEvent", bytes))
        << testing::PrintToString(bytes);
  }
  EXPECT_EQ(*calls, 0);
  EXPECT_EQ(mClient.Client<IFeedback>("Feedback")->TriggerFeedbackEvent({}, {}).result(),
            ipc::EResultOk);
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
    return Result(ipc::EResultOk);
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
    return Result(ipc::EResultOk);
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
