#include "platform/rpc/bordercheck.h"

#include <fmt/core.h>

namespace Rpc {
namespace {

std::string CheckInstance(const char* field, const ipc::MInstanceType& message) {
  const int instance = message.instance();
  if (instance >= 0 && instance <= kConnectorCount) {
    return {};
  }
  return fmt::format("{}: {} is not an instance of this charger (0 for all, 1 to {})", field,
                     instance, kConnectorCount);
}

}  // namespace

std::string Check(const ipc::MEmpty&) {
  return {};
}

std::string Check(const ipc::MInstanceType& message) {
  return CheckInstance("instance", message);
}

std::string Check(const ipc::MResult&) {
  return {};
}

std::string Check(const ipc::MState&) {
  return {};
}

std::string Check(const ipc::MAlive&) {
  return {};
}

std::string Check(const ipc::MLogConfig& message) {
  return !message.has_level() || ipc::ELogLevel_IsValid(message.level())
             ? ""
             : fmt::format("level: {} is not a log level (0 trace to 6 off)",
                           static_cast<int>(message.level()));
}

std::string Check(const ipc::MFeedbackEvent& message) {
  return message.has_type() ? CheckInstance("instance", message.instance()) : "type: missing";
}

std::string Check(const ipc::MDiagnosticsSignal& message) {
  if (message.data().empty()) {
    return "data: a signal carries at least one value";
  }
  for (const auto& data : message.data()) {
    if (data.value_case() == ipc::MDiagnosticsData::VALUE_NOT_SET) {
      return "data: an entry carries no value";
    }
  }
  return CheckInstance("instance", message.instance());
}

std::string Check(const ipc::MDiagnosticsRequest& message) {
  return CheckInstance("instance", message.instance());
}

std::string Check(const ipc::MDiagnosticsNotification& message) {
  if (!message.has_type()) {
    return "type: missing";
  }
  if (message.type().type() != ipc::MDiagnosticsNotificationType::EError) {
    return {};
  }
  // A kind of value that is not known here is a value all the same: the error is not active.
  return message.signal().data().empty()
             ? "signal.data: an error carries at least one value"
             : CheckInstance("signal.instance", message.signal().instance());
}

std::string Check(const ipc::MConnectorInfo&) {
  return {};
}

std::string Check(const ipc::MAuthorizeRequest& message) {
  return CheckInstance("instance", message.instance());
}

std::string Check(const ipc::MConnectorStateNotification& message) {
  return message.has_state() ? "" : "state: missing";
}

std::string Check(const ipc::MDisplayBrightness& message) {
  return message.percentage() <= 100
             ? ""
             : fmt::format("percentage: {} is above 100", message.percentage());
}

}  // namespace Rpc
