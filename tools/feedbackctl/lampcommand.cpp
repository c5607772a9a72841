#include <fmt/format.h>
#include <json/json.h>

#include <algorithm>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/sessionmanager.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/lampexplanation.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/storecheck.h"
#include "tools/feedbackctl/swatch.h"
#include "utils/settingscatalogue.h"
#include "utils/signalcatalogue.h"
#include "utils/timestamp.h"

namespace {

// By asking for each: a subscription would tell them too, but not when it has told them all.
std::vector<SLampFacts::SError> ErrorsThatAreOn(IDiagnostics& diagnostics) {
  std::vector<std::pair<std::chrono::system_clock::time_point, SLampFacts::SError>> found;
  for (const auto& signal : AllSignals()) {
    if (signal.identifier < kFirstError || signal.identifier >= kFirstWarning) {
      continue;
    }
    for (const auto instance : {ipc::EInstanceTypeAll, ipc::EInstanceTypeConnector1}) {
      const auto last = LastSignal(diagnostics, signal.identifier, instance);
      if (last && last->data(0).bool_value()) {
        found.emplace_back(ToSystemClock(last->timestamp()),
                           SLampFacts::SError{signal.identifier, std::string(signal.name)});
        break;
      }
    }
  }
  std::ranges::stable_sort(found, {}, [](const auto& each) { return each.first; });
  std::vector<SLampFacts::SError> errors;
  std::ranges::transform(found, std::back_inserter(errors), [](auto& each) { return each.second; });
  return errors;
}

SLampFacts Ask(const CInvocation& invocation) {
  CServices services(invocation);
  SLampFacts facts;
  facts.installationComplete =
      EffectiveSetting(invocation.Store(), Settings::kSection, Settings::kInstallationComplete)
          .asBool();
  if (services.WhyNoAnswer(kDiagnosticsService).empty()) {
    const auto diagnostics = services.Client<IDiagnostics>(kDiagnosticsService);
    if (const auto led = LastSignal(*diagnostics, Signals::LedState.identifier)) {
      facts.reported = led->data(0).string_value();
      facts.reportedAge = std::chrono::floor<std::chrono::milliseconds>(
          std::chrono::system_clock::now() - ToSystemClock(led->timestamp()));
    }
    facts.errors = ErrorsThatAreOn(*diagnostics);
  }
  if (services.WhyNoAnswer(kControlService).empty()) {
    facts.state = AwaitState(*services.Client<IGenericControl>(kControlService));
  }
  if (services.WhyNoAnswer(kSessionManagerService).empty()) {
    try {
      ipc::MInstanceType connector;
      connector.set_instance(ipc::EInstanceTypeConnector1);
      facts.connectorState = services.Client<ISessionManager>(kSessionManagerService)
                                 ->GetConnectorInfo(connector)
                                 .state()
                                 .state();
    } catch (const Rpc::CommunicationException&) {
      // It went away: as if it had not been there.
    }
  }
  return facts;
}

Json::Value OrNull(const std::optional<std::string>& text) {
  return text ? Json::Value(*text) : Json::Value();
}

Json::Value AsJson(const SLampFacts& facts, const SLampExplanation& explanation) {
  Json::Value json;
  json["lamp"] = OrNull(facts.reported);
  json["ageMilliseconds"] =
      facts.reported ? Json::Value(Json::Int64(facts.reportedAge.count())) : Json::Value();
  json["winner"] = explanation.winner;
  json["fits"] = explanation.fits ? Json::Value(*explanation.fits) : Json::Value();
  json["sources"] = Json::arrayValue;
  for (const auto& source : explanation.sources) {
    Json::Value entry;
    entry["name"] = source.name;
    entry["wants"] = OrNull(source.wants);
    entry["why"] = source.why;
    json["sources"].append(entry);
  }
  json["notes"] = Json::arrayValue;
  for (const auto& note : explanation.notes) {
    json["notes"].append(note);
  }
  return json;
}

void Print(const SLampFacts& facts, const SLampExplanation& explanation, const CTool& tool) {
  tool.out << (facts.reported
                   ? fmt::format("lamp  {}{}, reported {:.1f} s ago\n",
                                 Swatch(*facts.reported, tool.hasColours), *facts.reported,
                                 static_cast<double>(facts.reportedAge.count()) / 1000)
                   : "lamp  not reported\n")
           << "what asks for a light, the first one wins:\n";
  for (const auto& source : explanation.sources) {
    tool.out << fmt::format("{} {:<9}  {:<14}  {}\n", source.name == explanation.winner ? '>' : ' ',
                            source.name, source.wants.value_or("-"), source.why);
  }
  for (const auto& note : explanation.notes) {
    tool.out << "note: " << note << '\n';
  }
}

}  // namespace

int RunLamp(const CInvocation& invocation, const CTool& tool) {
  const auto facts = Ask(invocation);
  const auto explanation = ExplainLamp(facts);
  if (invocation.Has("--json")) {
    tool.out << JsonText(AsJson(facts, explanation)) << '\n';
  } else {
    Print(facts, explanation, tool);
  }
  return facts.errors ? kDone : kFailed;
}
