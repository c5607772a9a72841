#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/rpc/communicationexception.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/virtualcharger/peers/events.h"
#include "virtualcharger/peers/virtualdiagnostics.h"

namespace {

using testing::Optional;
using testing::Pair;
using Type = ipc::MDiagnosticsNotificationType;

constexpr auto kName = "Diagnostics";

ipc::MDiagnosticsSignal Signal(int identifier,
                               ipc::EInstanceType instance = ipc::EInstanceTypeAll) {
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(static_cast<ipc::ESignalIdentifier>(identifier));
  signal.mutable_instance()->set_instance(instance);
  return signal;
}

ipc::MDiagnosticsSignal Bool(int identifier, bool value) {
  auto signal = Signal(identifier);
  signal.add_data()->set_bool_value(value);
  return signal;
}

ipc::MDiagnosticsSignal Text(int identifier, const std::string& value,
                             ipc::EInstanceType instance = ipc::EInstanceTypeAll) {
  auto signal = Signal(identifier, instance);
  signal.add_data()->set_string_value(value);
  return signal;
}

class AVirtualDiagnosticsService : public testing::Test {
 protected:
  using Notification = std::pair<int, bool>;

  AVirtualDiagnosticsService()
      : mService(std::make_shared<CVirtualDiagnostics>(Into(mEvents))),
        mServer(mDirectory, [this](Host& host) { host.AddService<IDiagnostics>(kName, mService); }),
        mClient(mDirectory),
        mDiagnostics(mClient.Client<IDiagnostics>(kName)) {}

  // Returns when the service knows of it.
  void Subscribe(const std::function<ipc::MResult(const ipc::MDiagnosticsSignal&)>& handler) {
    mDiagnostics->SetNotificationCallback(
        [handler](const ipc::MDiagnosticsSignal& signal, const Type&) { return handler(signal); });
    while (mEvents.Next() != "subscribers 1") {
    }
  }

  void SubscribeAndCollect() {
    Subscribe([this](const ipc::MDiagnosticsSignal& signal) {
      mHeard.Add({signal.identifier(), signal.data(0).bool_value()});
      return ipc::MResult();
    });
  }

  std::string Received(int identifier, ipc::EInstanceType instance) {
    ipc::MDiagnosticsRequest request;
    request.set_identifier(static_cast<ipc::ESignalIdentifier>(identifier));
    request.mutable_instance()->set_instance(instance);
    return mDiagnostics->ReceiveSignal(request).data(0).string_value();
  }

  Arrivals<std::string> mEvents;
  Arrivals<Notification> mHeard;
  const SocketDirectory mDirectory;
  const std::shared_ptr<CVirtualDiagnostics> mService;
  RunningHost mServer;
  RunningHost mClient;
  const std::shared_ptr<IDiagnostics> mDiagnostics;
};

TEST_F(AVirtualDiagnosticsService, KeepsTheLastValueOfEachSignalAndInstance) {
  mDiagnostics->SendSignal(Text(111, "Red/On"));
  mDiagnostics->SendSignal(Text(111, "Blue/On", ipc::EInstanceTypeConnector1));
  mDiagnostics->SendSignal(Text(111, "Green/On"));
  EXPECT_EQ(Received(111, ipc::EInstanceTypeAll), "Green/On");
  EXPECT_EQ(Received(111, ipc::EInstanceTypeConnector1), "Blue/On");
}

TEST_F(AVirtualDiagnosticsService, SaysWhichSignalWasNeverSent) {
  try {
    Received(1004, ipc::EInstanceTypeAll);
    FAIL() << "there is a value";
  } catch (const Rpc::CommunicationException& exception) {
    EXPECT_THAT(exception.what(),
                testing::HasSubstr("signal 1004 (ChargeControl Cp Low Error) of instance 0"));
  }
}

TEST_F(AVirtualDiagnosticsService, IsDoneWithAnErrorWhenTheSubscriberHasHandledIt) {
  std::atomic<int> handled = 0;
  Subscribe([&](const ipc::MDiagnosticsSignal& signal) {
    handled = signal.data(0).bool_value() ? signal.identifier() : -signal.identifier();
    return ipc::MResult();
  });
  EXPECT_EQ(mService->SetError(1004, true), kOutcomeOk);
  EXPECT_EQ(handled, 1004);
  EXPECT_EQ(mService->SetError(1004, false), kOutcomeOk);
  EXPECT_EQ(handled, -1004);
}

TEST_F(AVirtualDiagnosticsService, PassesOnThatTheSubscriberRefusedAnError) {
  Subscribe([](const ipc::MDiagnosticsSignal&) {
    ipc::MResult result;
    result.set_result(ipc::EResultIllegal);
    result.set_text("not now");
    return result;
  });
  EXPECT_EQ(mService->SetError(1004, true), "refused not now");
}

TEST_F(AVirtualDiagnosticsService, KeepsErrorsForALaterSubscriberInTheirOrder) {
  EXPECT_EQ(mService->SetError(1004, true), kOutcomeNobody);
  EXPECT_EQ(mService->SetError(1002, true), kOutcomeNobody);
  EXPECT_EQ(mService->SetError(1004, false), kOutcomeNobody);
  SubscribeAndCollect();
  EXPECT_THAT(mHeard.Next(), Optional(Pair(1002, true)));
  EXPECT_THAT(mHeard.Next(), Optional(Pair(1004, false)));
}

TEST_F(AVirtualDiagnosticsService, TellsASenderOfItsOwnErrorEvenFromInsideANotification) {
  Subscribe([this](const ipc::MDiagnosticsSignal& signal) {
    mHeard.Add({signal.identifier(), signal.data(0).bool_value()});
    if (signal.identifier() == 1004) mDiagnostics->SendSignal(Bool(1105, true));
    return ipc::MResult();
  });
  EXPECT_EQ(mDiagnostics->SendSignal(Bool(1004, true)).result(), ipc::EResultOk);
  EXPECT_THAT(mHeard.Next(), Optional(Pair(1004, true)));
  EXPECT_THAT(mHeard.Next(), Optional(Pair(1105, true)));
}

TEST(ANotificationType, FollowsFromTheNumberAndTheKindOfValue) {
  using MaybeType = std::optional<Type::Type>;
  const std::vector<std::pair<ipc::MDiagnosticsSignal, MaybeType>> cases{
      {Bool(999, true), {}},
      {Bool(1000, true), Type::EError},
      {Bool(9999, false), Type::EError},
      {Bool(10000, true), Type::EWarning},
      {Bool(19999, true), Type::EWarning},
      {Bool(20000, true), {}},
      {Text(1000, "x"), {}},
      {Text(19999, "x"), {}},
      {Text(20000, "x"), Type::ECriticalSecurityEvent},
      {Signal(1000), {}},
  };
  for (const auto& [signal, type] : cases) {
    EXPECT_EQ(NotificationTypeOf(signal), type) << signal.identifier();
  }
}

TEST(AValue, IsWrittenAsPeopleReadIt) {
  auto signal = Signal(52);
  EXPECT_EQ(ValueText(signal), "");
  signal.add_data()->set_int32_value(-16000);
  signal.add_data()->set_uint32_value(4'000'000'000);
  signal.add_data()->set_int64_value(-5'000'000'000);
  signal.add_data()->set_float_value(0.5F);
  signal.add_data()->set_bool_value(true);
  EXPECT_EQ(ValueText(signal), "-16000 4000000000 -5000000000 0.5 true");
}

}  // namespace
