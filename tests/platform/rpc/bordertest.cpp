#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "platform/rpc/bordercheck.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

template <typename Message>
Message With(const std::function<void(Message&)>& change) {
  Message message;
  change(message);
  return message;
}

ipc::MDiagnosticsSignal Signal(int instance) {
  ipc::MDiagnosticsSignal signal;
  signal.add_data()->set_bool_value(true);
  signal.mutable_instance()->set_instance(static_cast<ipc::EInstanceType>(instance));
  return signal;
}

TEST(TheBorder, TakesTheInstancesOfThisChargerOnly) {
  for (const int instance : {-1, 0, 1, 2, 255}) {
    const auto expected = instance == 0 || instance == 1
                              ? testing::Matcher<std::string>(IsEmpty())
                              : HasSubstr("instance: " + std::to_string(instance));
    EXPECT_THAT(Rpc::Check(Signal(instance).instance()), expected);
    EXPECT_THAT(Rpc::Check(Signal(instance)), expected);
    const auto inMessage = [&]<typename Message>(Message message) {
      *message.mutable_instance() = Signal(instance).instance();
      return Rpc::Check(message);
    };
    EXPECT_THAT(inMessage(With<ipc::MFeedbackEvent>([](auto& event) { event.mutable_type(); })),
                expected);
    EXPECT_THAT(inMessage(ipc::MDiagnosticsRequest()), expected);
    EXPECT_THAT(inMessage(ipc::MAuthorizeRequest()), expected);
  }
}

TEST(TheBorder, RefusesASignalWithoutAValueNamingTheField) {
  ipc::MDiagnosticsSignal signal;
  EXPECT_THAT(Rpc::Check(signal), HasSubstr("data:"));
  signal.add_data();
  EXPECT_THAT(Rpc::Check(signal), HasSubstr("data:"));
  signal.mutable_data(0)->set_float_value(0);
  EXPECT_THAT(Rpc::Check(signal), IsEmpty());
  signal.add_data();
  EXPECT_THAT(Rpc::Check(signal), HasSubstr("data:")) << "each entry counts";

  ipc::MDiagnosticsNotification notification;
  EXPECT_THAT(Rpc::Check(notification), HasSubstr("type: missing"));
  notification.mutable_type()->set_type(ipc::MDiagnosticsNotificationType::EError);
  EXPECT_THAT(Rpc::Check(notification), HasSubstr("signal.data:"));
  EXPECT_THAT(Rpc::Check(ipc::MFeedbackEvent()), HasSubstr("type: missing"));
  EXPECT_THAT(Rpc::Check(ipc::MConnectorStateNotification()), HasSubstr("state:"));
}

TEST(TheBorder, RefusesValuesThatNothingBehindItHasAnAnswerFor) {
  EXPECT_THAT(Rpc::Check(With<ipc::MLogConfig>(
                  [](auto& message) { message.set_level(static_cast<ipc::ELogLevel>(7)); })),
              HasSubstr("level: 7"));
  EXPECT_THAT(
      Rpc::Check(With<ipc::MDisplayBrightness>([](auto& message) { message.set_percentage(101); })),
      HasSubstr("percentage: 101"));
}

TEST(TheBorder, LetsNewerValuesPassThatTheLayersAboveAnswer) {
  EXPECT_THAT(Rpc::Check(With<ipc::MConnectorStateNotification>([](auto& message) {
                message.mutable_state()->set_state(static_cast<ipc::EConnectorState>(42));
              })),
              IsEmpty());
  EXPECT_THAT(Rpc::Check(With<ipc::MFeedbackEvent>([](auto& message) {
                message.mutable_type()->set_event(static_cast<ipc::EFbEventType>(42));
              })),
              IsEmpty());
  auto signal = Signal(1);
  signal.set_identifier(static_cast<ipc::ESignalIdentifier>(123456));
  EXPECT_THAT(Rpc::Check(signal), IsEmpty());

  ipc::MDiagnosticsNotification notification;
  notification.mutable_signal()->add_data();
  for (const int type : {0, 1, 2, 42}) {
    notification.mutable_type()->set_type(
        static_cast<ipc::MDiagnosticsNotificationType::Type>(type));
    EXPECT_THAT(Rpc::Check(notification), IsEmpty()) << type;
  }
}

}  // namespace
