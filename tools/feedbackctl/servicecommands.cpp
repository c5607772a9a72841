#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <future>
#include <map>

#include "platform/rpc/bordercheck.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/feedback.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/words.h"
#include "utils/controltext.h"

namespace {

constexpr auto kStateLimit = std::chrono::seconds(2);

constexpr auto kServices =
    std::to_array<const char*>({kControlService, kLogService, kFeedbackService, kDiagnosticsService,
                                "SessionManager", "Meter1"});

std::size_t Choice(const std::string& word, std::string_view what,
                   std::span<const std::string_view> known) {
  const auto found = std::ranges::find(known, word);
  if (found == known.end()) {
    throw CUsageError(
        fmt::format("\"{}\" is not {}; expected {}", word, what, fmt::join(known, ", ")));
  }
  return static_cast<std::size_t>(found - known.begin());
}

ipc::EInstanceType Instance(const CInvocation& invocation) {
  const std::string word = invocation.Option("--instance", "0");
  int number = 0;
  const char* end = word.data() + word.size();
  const auto [stopped, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stopped != end || number < 0 || number > Rpc::kConnectorCount) {
    throw CUsageError(fmt::format("--instance: \"{}\" is not 0 (the whole charger) to {}", word,
                                  Rpc::kConnectorCount));
  }
  return static_cast<ipc::EInstanceType>(number);
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
  return fmt::format("{}, console {}", kLogLevels.at(static_cast<std::size_t>(config.level())),
                     config.console() ? "on" : "off");
}

// All at once: each that hangs takes its time.
std::map<std::string, std::string> ReasonsForSilence(const CServices& services) {
  std::map<std::string, std::future<std::string>> probes;
  for (const auto* service : kServices) {
    probes[service] = std::async(std::launch::async,
                                 [&services, service] { return services.WhyNoAnswer(service); });
  }
  std::map<std::string, std::string> reasons;
  for (auto& [service, probe] : probes) {
    reasons[service] = probe.get();
  }
  return reasons;
}

}  // namespace

int RunStatus(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  const auto reasons = ReasonsForSilence(services);
  // A service that does not answer, or fails in the middle, costs its own line only.
  const auto line = [&](const char* what, const char* service, const auto& text) {
    std::string shown = "unknown";
    if (reasons.at(service).empty()) {
      try {
        shown = text();
      } catch (const Rpc::CommunicationException& error) {
        shown += fmt::format(": {}", error.what());
      }
    }
    tool.out << fmt::format("{:<10} {}\n", what, shown);
  };
  line("state", kControlService, [&] {
    const auto state = AwaitState(*services.Client<IGenericControl>(kControlService), kStateLimit);
    return state ? StateToString(*state) : "not reported yet";
  });
  line("log level", kLogService,
       [&] { return LogText(services.Client<ILogConfig>(kLogService)->GetLogConfig()); });
  line("lamp", kDiagnosticsService, [&] {
    return LampState(*services.Client<IDiagnostics>(kDiagnosticsService))
        .value_or("not reported yet");
  });
  tool.out << fmt::format("services in {}:\n", services.Directory());
  for (const auto* service : kServices) {
    const auto& reason = reasons.at(service);
    tool.out << fmt::format("  {:<16} {}\n", service, reason.empty() ? "answers" : reason);
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
  event.set_event(static_cast<ipc::EFbEventType>(
      Choice(invocation.arguments[0], "a feedback event", kFeedbackEvents)));
  ipc::MInstanceType instance;
  instance.set_instance(Instance(invocation));
  CServices services(invocation);
  return TellVerdict(
      services.Daemon<IFeedback>(kFeedbackService)->TriggerFeedbackEvent(event, instance), tool);
}

int RunLogLevel(const CInvocation& invocation, const CTool& tool) {
  ipc::MLogConfig wanted;
  for (const auto& level : invocation.arguments) {
    wanted.set_level(static_cast<ipc::ELogLevel>(Choice(level, "a log level", kLogLevels)));
  }
  CServices services(invocation);
  const auto log = services.Daemon<ILogConfig>(kLogService);
  if (wanted.has_level()) {
    return TellVerdict(log->SetLogConfig(wanted), tool);
  }
  tool.out << LogText(log->GetLogConfig()) << '\n';
  return kDone;
}
