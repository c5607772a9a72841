#include "tools/feedbackctl/services.h"

#include <fmt/format.h>

#include <filesystem>
#include <future>
#include <stdexcept>
#include <utility>

#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "tools/feedbackctl/socketprobe.h"
#include "tools/feedbackctl/words.h"

namespace {

std::string SocketDirectory(const CInvocation& invocation) {
  if (invocation.Has("--root") && !std::filesystem::exists(invocation.Store())) {
    throw std::runtime_error(
        fmt::format("no store {}; give --root as the daemon was given it", invocation.Store()));
  }
  return Rpc::ReadCommunicationConfig(invocation.Store()).socketDirectory;
}

}  // namespace

CServices::CServices(const CInvocation& invocation)
    : mDirectory(SocketDirectory(invocation)),
      mHost(invocation.Store()),
      mNotifications([this] { mHost.HandleClientNotifications(); }) {}

CServices::~CServices() {
  mHost.Stop();
  mNotifications.join();
}

std::string CServices::WhyNoAnswer(const std::string& service) const {
  return ::WhyNoAnswer(mDirectory + "/" + service);
}

std::map<std::string, std::string> CServices::ReasonsForSilence() const {
  std::map<std::string, std::future<std::string>> probes;
  for (const auto* service : kServices) {
    probes[service] =
        std::async(std::launch::async, [this, service] { return WhyNoAnswer(service); });
  }
  std::map<std::string, std::string> reasons;
  for (auto& [service, probe] : probes) {
    reasons[service] = probe.get();
  }
  return reasons;
}

void CServices::RequireAnswer(const std::string& service) const {
  const std::string why = WhyNoAnswer(service);
  if (why.starts_with("no socket") || why.starts_with("nobody")) {
    throw std::runtime_error(fmt::format(
        "the daemon is not running: {}; start it, or say with --root or --charger which "
        "one is meant (\"feedbackctl chargers\" lists the virtual ones)",
        why));
  }
  if (!why.empty()) {
    throw std::runtime_error("the daemon cannot be used: " + why);
  }
}

std::optional<ipc::EState> AwaitState(IGenericControl& control, std::chrono::milliseconds limit) {
  auto reported = std::make_shared<std::promise<ipc::EState>>();
  auto state = reported->get_future();
  control.ConnectReporters(
      [reported, isFirst = true](const ipc::MState& report) mutable {
        if (std::exchange(isFirst, false)) {
          reported->set_value(report.state());
        }
      },
      {});
  if (state.wait_for(limit) != std::future_status::ready) {
    return std::nullopt;
  }
  return state.get();
}

std::optional<ipc::MDiagnosticsSignal> LastSignal(IDiagnostics& diagnostics,
                                                  ipc::ESignalIdentifier identifier,
                                                  ipc::EInstanceType instance) {
  ipc::MDiagnosticsRequest request;
  request.set_identifier(identifier);
  request.mutable_instance()->set_instance(instance);
  try {
    auto signal = diagnostics.ReceiveSignal(request);
    if (!signal.data().empty()) {
      return signal;
    }
  } catch (const Rpc::CommunicationException&) {
    // It is not there, or nobody has sent the signal yet.
  }
  return std::nullopt;
}

std::string LogText(const ipc::MLogConfig& config) {
  return fmt::format("{}, console {}",
                     KnownWords("LEVEL").at(static_cast<std::size_t>(config.level())),
                     config.console() ? "on" : "off");
}
