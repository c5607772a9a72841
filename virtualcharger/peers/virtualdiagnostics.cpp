#include "virtualcharger/peers/virtualdiagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "platform/rpc/communicationexception.h"
#include "utils/signalcatalogue.h"

namespace {

using Type = ipc::MDiagnosticsNotificationType;

constexpr auto kService = "Diagnostics";
constexpr auto kNotification = "Notifications";

// "LED state"; "1004 ChargeControl Cp Low Error" for what is known by its number.
std::string Name(ipc::ESignalIdentifier identifier) {
  const auto* description = FindSignal(identifier);
  if (description == nullptr) return fmt::format("signal {}", static_cast<int>(identifier));
  if (identifier < kFirstError) return std::string(description->name);
  return fmt::format("{} {}", static_cast<int>(identifier), description->name);
}

std::string Words(const ipc::MDiagnosticsSignal& signal) {
  return fmt::format("{} = {}", Name(signal.identifier()), ValueText(signal));
}

std::string Text(const ipc::MDiagnosticsData& data) {
  switch (data.value_case()) {
    case ipc::MDiagnosticsData::kBoolValue:
      return data.bool_value() ? "true" : "false";
    case ipc::MDiagnosticsData::kInt32Value:
      return fmt::format("{}", data.int32_value());
    case ipc::MDiagnosticsData::kUint32Value:
      return fmt::format("{}", data.uint32_value());
    case ipc::MDiagnosticsData::kInt64Value:
      return fmt::format("{}", data.int64_value());
    case ipc::MDiagnosticsData::kFloatValue:
      return fmt::format("{}", data.float_value());
    case ipc::MDiagnosticsData::kStringValue:
      return data.string_value();
    case ipc::MDiagnosticsData::VALUE_NOT_SET:
      break;
  }
  return {};
}

ipc::MDiagnosticsSignal ErrorSignal(int identifier, bool on) {
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(static_cast<ipc::ESignalIdentifier>(identifier));
  const auto* description = FindSignal(signal.identifier());
  const bool ofConnector =
      description != nullptr && description->category == ESignalCategory::EConnector;
  signal.mutable_instance()->set_instance(ofConnector ? ipc::EInstanceTypeConnector1
                                                      : ipc::EInstanceTypeAll);
  signal.add_data()->set_bool_value(on);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
  signal.mutable_timestamp()->set_seconds(seconds.count());
  signal.mutable_timestamp()->set_microseconds(static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(now - seconds).count()));
  return signal;
}

}  // namespace

std::optional<Type::Type> NotificationTypeOf(const ipc::MDiagnosticsSignal& signal) {
  if (signal.data().empty()) {
    return std::nullopt;
  }
  const auto& data = signal.data(0);
  const int identifier = signal.identifier();
  if (data.value_case() == ipc::MDiagnosticsData::kBoolValue && identifier >= kFirstError &&
      identifier < kFirstEvent) {
    return identifier < kFirstWarning ? Type::EError : Type::EWarning;
  }
  if (data.value_case() == ipc::MDiagnosticsData::kStringValue && identifier >= kFirstEvent) {
    return Type::ECriticalSecurityEvent;
  }
  return std::nullopt;
}

std::string ValueText(const ipc::MDiagnosticsSignal& signal) {
  std::string text;
  for (const auto& data : signal.data()) {
    if (!text.empty()) text += ' ';
    text += Text(data);
  }
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return byte < ' '; }, '?');
  return text;
}

CVirtualDiagnostics::CVirtualDiagnostics(PeerEvents events)
    : mEvents(std::move(events)), mWire("diagnostics", mEvents) {
  mNotifier.Start();
}

ipc::MResult CVirtualDiagnostics::SendSignal(const ipc::MDiagnosticsSignal& signal) {
  auto message = mWire.Called(kService, "SendSignal", Words(signal));
  Store(signal);
  message.End(ipc::MResult());
  if (const auto type = NotificationTypeOf(signal)) {
    mNotifier.NonBlockingCall([this, signal, type] { Notify(signal, *type); });
  }
  return {};
}

ipc::MDiagnosticsSignal CVirtualDiagnostics::ReceiveSignal(
    const ipc::MDiagnosticsRequest& request) {
  auto message = mWire.Called(kService, "ReceiveSignal", Name(request.identifier()));
  const std::lock_guard lock(mMutex);
  const auto last = mLast.find({request.identifier(), request.instance().instance()});
  if (last == mLast.end()) {
    message.End("not sent yet", false);
    const auto* description = FindSignal(request.identifier());
    throw Rpc::CommunicationException(
        fmt::format("Diagnostics: signal {} ({}) of instance {} has not been sent yet",
                    static_cast<int>(request.identifier()),
                    description == nullptr ? "not in the catalogue" : description->name,
                    static_cast<int>(request.instance().instance())));
  }
  message.End(ValueText(last->second));
  return last->second;
}

void CVirtualDiagnostics::SetNotificationCallback(NotificationCallback callback) {
  const std::lock_guard lock(mMutex);
  mTellSubscribers = std::move(callback);
}

void CVirtualDiagnostics::OnSubscribers(std::size_t count) {
  mSubscribers = count;
  mEvents("subscribers " + std::to_string(count));
  mWire.Subscribers(kService, kNotification, count);
}

std::string CVirtualDiagnostics::SetError(int identifier, bool on) {
  const auto signal = ErrorSignal(identifier, on);
  Store(signal);
  const auto type = NotificationTypeOf(signal).value_or(Type::EError);
  std::string outcome;
  mNotifier.BlockingCall([&] { outcome = Notify(signal, type); });
  return outcome;
}

void CVirtualDiagnostics::Store(const ipc::MDiagnosticsSignal& signal) {
  const std::lock_guard lock(mMutex);
  mLast[{signal.identifier(), signal.instance().instance()}] = signal;
  mEvents(fmt::format("signal {} {}", static_cast<int>(signal.identifier()), ValueText(signal)));
}

std::string CVirtualDiagnostics::Notify(const ipc::MDiagnosticsSignal& signal, Type::Type type) {
  NotificationCallback tellSubscribers;
  {
    const std::lock_guard lock(mMutex);
    tellSubscribers = mTellSubscribers;
  }
  if (!tellSubscribers) {
    return std::string(kOutcomeNobody);
  }
  const bool nobody = mSubscribers == 0;
  Type notification;
  notification.set_type(type);
  auto message = mWire.Notification(kService, kNotification, Words(signal));
  const auto reply = tellSubscribers(signal, notification);
  if (reply.result() != ipc::EResultOk) {
    message.End(reply);
    return fmt::format("{} {}", kOutcomeRefused, reply.text());
  }
  message.End(nobody ? "nobody is subscribed" : "Ok", !nobody);
  return std::string(nobody ? kOutcomeNobody : kOutcomeOk);
}
