#include <fmt/format.h>
#include <json/json.h>

#include <functional>
#include <optional>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/swatch.h"
#include "tools/feedbackctl/words.h"
#include "utils/controltext.h"
#include "utils/signalcatalogue.h"

namespace {

using Text = std::optional<std::string>;

struct SStatus {
  using Reasons = std::map<std::string, std::string>;

  Reasons reasons;  // of each service that does not answer; empty text for one that does
  // Empty where the one that knows does not answer or has not been told.
  Text state;
  Text logLevel;
  Text lamp;
};

SStatus Ask(CServices& services) {
  SStatus status;
  status.reasons = services.ReasonsForSilence();
  // A service that goes while it is asked costs its own answer only.
  const auto ask = [&](const char* service, const std::function<Text()>& question) -> Text {
    try {
      return status.reasons.at(service).empty() ? question() : std::nullopt;
    } catch (const Rpc::CommunicationException& error) {
      status.reasons[service] = error.what();
      return std::nullopt;
    }
  };
  status.state = ask(kControlService, [&]() -> Text {
    const auto state = AwaitState(*services.Client<IGenericControl>(kControlService));
    return state ? Text(StateToString(*state)) : std::nullopt;
  });
  status.logLevel = ask(kLogService, [&] {
    return LogText(services.Client<ILogConfig>(kLogService)->GetLogConfig());
  });
  status.lamp = ask(kDiagnosticsService, [&]() -> Text {
    const auto lamp = LastSignal(*services.Client<IDiagnostics>(kDiagnosticsService),
                                 Signals::LedState.identifier);
    return lamp ? Text(lamp->data(0).string_value()) : std::nullopt;
  });
  return status;
}

Json::Value AsJson(const SStatus& status) {
  const auto orNull = [](const Text& text) { return text ? Json::Value(*text) : Json::Value(); };
  Json::Value json;
  json["state"] = orNull(status.state);
  json["logLevel"] = orNull(status.logLevel);
  json["lamp"] = orNull(status.lamp);
  for (const auto& [service, reason] : status.reasons) {
    json["services"][service]["answers"] = reason.empty();
    json["services"][service]["reason"] = reason;
  }
  return json;
}

void Print(const SStatus& status, const CServices& services, const CTool& tool) {
  const auto line = [&](const char* what, const char* service, const Text& known) {
    const auto* unknown = status.reasons.at(service).empty() ? "not reported yet" : "unknown";
    tool.out << fmt::format("{:<10} {}{}\n", what,
                            known ? Swatch(*known, tool.hasColours) : std::string(),
                            known.value_or(unknown));
  };
  line("state", kControlService, status.state);
  line("log level", kLogService, status.logLevel);
  line("lamp", kDiagnosticsService, status.lamp);
  tool.out << fmt::format("services in {}:\n", services.Directory());
  for (const auto* service : kServices) {
    const auto& reason = status.reasons.at(service);
    tool.out << fmt::format("  {:<16} {}\n", service, reason.empty() ? "answers" : reason);
  }
}

}  // namespace

int RunStatus(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  const auto status = Ask(services);
  if (invocation.Has("--json")) {
    tool.out << JsonText(AsJson(status)) << '\n';
  } else {
    Print(status, services, tool);
  }
  services.RequireAnswer(kControlService);
  return kDone;
}
