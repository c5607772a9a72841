#include <fmt/format.h>
#include <json/json.h>

#include <optional>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/feedback.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/words.h"
#include "utils/controltext.h"
#include "utils/signalcatalogue.h"

namespace {

constexpr auto kStateLimit = std::chrono::seconds(2);

ipc::EInstanceType Instance(const CInvocation& invocation) {
  return static_cast<ipc::EInstanceType>(
      Choice(invocation.Option("--instance", "0"), "a connector", "N"));
}

int TellVerdict(const ipc::MResult& result, const CTool& tool) {
  if (result.result() == ipc::EResultOk) {
    tool.out << "taken\n";
    return kDone;
  }
  tool.err << fmt::format(
      "feedbackctl: the daemon refused: {}{}{}; \"feedbackctl status\" shows its state\n",
      ResultToString(result), result.text().empty() ? "" : ": ", result.text());
  return kFailed;
}

std::string LogText(const ipc::MLogConfig& config) {
  return fmt::format("{}, console {}",
                     KnownWords("LEVEL").at(static_cast<std::size_t>(config.level())),
                     config.console() ? "on" : "off");
}

}  // namespace

int RunStatus(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  const auto reasons = services.ReasonsForSilence();
  const bool wantsJson = invocation.Has("--json");
  Json::Value json;
  // A service that does not answer, or fails in the middle, costs its own line only.
  const auto line = [&](const char* what, const char* name, const char* service, const auto& text) {
    std::optional<std::string> known;
    std::string shown = "unknown";
    if (reasons.at(service).empty()) {
      try {
        known = text();
        shown = known.value_or("not reported yet");
      } catch (const Rpc::CommunicationException& error) {
        shown += fmt::format(": {}", error.what());
      }
    }
    json[name] = known ? Json::Value(*known) : Json::Value();
    if (!wantsJson) {
      tool.out << fmt::format("{:<10} {}\n", what, shown);
    }
  };
  line("state", "state", kControlService, [&]() -> std::optional<std::string> {
    const auto state = AwaitState(*services.Client<IGenericControl>(kControlService), kStateLimit);
    return state ? std::optional(StateToString(*state)) : std::nullopt;
  });
  line("log level", "logLevel", kLogService, [&] {
    return std::optional(LogText(services.Client<ILogConfig>(kLogService)->GetLogConfig()));
  });
  line("lamp", "lamp", kDiagnosticsService, [&]() -> std::optional<std::string> {
    const auto lamp = LastSignal(*services.Client<IDiagnostics>(kDiagnosticsService),
                                 Signals::LedState.identifier);
    return lamp ? std::optional(lamp->data(0).string_value()) : std::nullopt;
  });
  if (wantsJson) {
    for (const auto& [service, reason] : reasons) {
      json["services"][service]["answers"] = reason.empty();
      json["services"][service]["reason"] = reason;
    }
    tool.out << JsonText(json) << '\n';
  } else {
    tool.out << fmt::format("services in {}:\n", services.Directory());
    for (const auto* service : kServices) {
      const auto& reason = reasons.at(service);
      tool.out << fmt::format("  {:<16} {}\n", service, reason.empty() ? "answers" : reason);
    }
  }
  services.RequireAnswer(kControlService);
  return kDone;
}

int RunEnable(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  return TellVerdict(services.Daemon<IGenericControl>(kControlService)->Enable(), tool);
}

int RunDisable(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  return TellVerdict(services.Daemon<IGenericControl>(kControlService)->Disable(), tool);
}

int RunTrigger(const CInvocation& invocation, const CTool& tool) {
  ipc::MFbEventType event;
  event.set_event(
      static_cast<ipc::EFbEventType>(Choice(invocation.arguments[0], "a feedback event", "EVENT")));
  ipc::MInstanceType instance;
  instance.set_instance(Instance(invocation));
  CServices services(invocation);
  return TellVerdict(
      services.Daemon<IFeedback>(kFeedbackService)->TriggerFeedbackEvent(event, instance), tool);
}

int RunLogLevel(const CInvocation& invocation, const CTool& tool) {
  ipc::MLogConfig wanted;
  for (const auto& level : invocation.arguments) {
    wanted.set_level(static_cast<ipc::ELogLevel>(Choice(level, "a log level", "LEVEL")));
  }
  CServices services(invocation);
  const auto log = services.Daemon<ILogConfig>(kLogService);
  if (wanted.has_level()) {
    return TellVerdict(log->SetLogConfig(wanted), tool);
  }
  tool.out << LogText(log->GetLogConfig()) << '\n';
  return kDone;
}
