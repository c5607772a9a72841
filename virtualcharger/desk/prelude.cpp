#include "virtualcharger/desk/prelude.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/ipc/genericcontrol.pb.h"
#include "platform/ipc/sessionmanager.pb.h"
#include "utils/settingscatalogue.h"
#include "utils/signalcatalogue.h"
#include "virtualcharger/desk/picture.h"
#include "virtualcharger/scenario/names.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

using Steps = std::vector<std::string>;

// Where no step can say it, a comment does.
std::string Stored(const std::string& key, const Json::Value& value) {
  if (value.isNull()) return "unset " + key;
  const auto step =
      fmt::format("set {} {}", key, value.isString() ? Quoted(value.asString()) : value.asString());
  const auto isSaid = [&] {
    const auto words = SplitWords(step);
    return words.size() == 3 && StoredValue(words[2]) == value;
  };
  try {
    if (isSaid()) return step;
  } catch (const CParseError&) {
  }
  return fmt::format("# {} held what no step can say", key);
}

// Some are read only when the daemon starts or is disabled, when a change may not have come to it
// yet.
void AddSettings(Steps& steps, const Json::Value& before, const Json::Value& settings) {
  for (const auto& setting : kSettings) {
    const std::string key(setting.key);
    const auto& value = settings[key];
    if (value == before[key] || value.isObject() || value.isArray()) continue;
    steps.push_back(Stored(key, value));
  }
  if (!steps.empty()) steps.insert(steps.end(), {"stop daemon", "start daemon"});
}

void AddInputs(Steps& steps, const CBench& bench) {
  const auto& processes = bench.Processes();
  const double lux = bench.Hardware().Sensor().Lux();
  if (lux != 0) steps.push_back(fmt::format("light {}", lux));
  if (processes.Connector().value != ipc::EConnectorStateAvailable) {
    steps.push_back("connector " + ConnectorStateName(processes.Connector().value));
  }
  if (!processes.MeterAccepts()) steps.push_back("meter refuses");
}

void AddLifecycle(Steps& steps, const CProcesses& processes) {
  const auto& state = processes.LastState();
  if (!state || state->value == ipc::EStateUninitialized) return;
  if (state->value != ipc::EStateDisabled && state->value != ipc::EStateEnabled) {
    steps.push_back("# no step leads to the state " + DaemonStateName(state->value));
    return;
  }
  steps.push_back("disable");
  if (state->value != ipc::EStateEnabled) return;
  steps.push_back("expect state disabled");
  steps.push_back("enable");
}

// The oldest one first: it is the one that is shown. What the daemon itself has raised is its own.
void AddErrors(Steps& steps, const CProcesses& processes) {
  auto errors = ActiveErrors(processes);
  std::erase(errors, Signals::InvalidConfigValueError.identifier);
  std::ranges::sort(errors, {}, [&](int error) { return processes.Signals().at(error).time; });
  for (const int error : errors) steps.push_back(fmt::format("error {} on", error));
}

void AddProcesses(Steps& steps, const CProcesses& processes) {
  for (const auto& name : ProcessNames()) {
    const auto& status = processes.Status(name);
    if (status.frozen) steps.push_back("freeze " + name);
    if (status.state == EProcessState::Stopped || status.state == EProcessState::Dead) {
      steps.push_back("kill " + name);
    }
  }
}

void AddFaults(Steps& steps, const CFaults& faults) {
  for (const auto& fault : FaultPictures(faults)) {
    const auto detail = fault["detail"].asString();
    steps.push_back(fmt::format("fault {} {} {}{}{}", fault["device"].asString(),
                                fault["attribute"].asString(), fault["fault"].asString(),
                                detail.empty() ? "" : " ", detail));
  }
}

// Nothing where a new charger would not show the same, or no scenario has a word for it.
std::string LampExpectation(const CBench& bench) {
  const auto lamp = bench.Lamp().words;
  const bool same = bench.Processes().Runs(kDaemon) && bench.Hardware().Faults().All().empty();
  return same && lamp.find("mixed") == std::string::npos ? "expect lamp " + lamp : "";
}

Steps Lead(const CBench& bench, const Json::Value& newSettings, const Json::Value& settings,
           const std::string& expectation) {
  Steps steps;
  AddSettings(steps, newSettings, settings);
  AddInputs(steps, bench);
  AddLifecycle(steps, bench.Processes());
  AddErrors(steps, bench.Processes());
  if (!expectation.empty()) steps.push_back(expectation);
  if (bench.LogLevel() != CBench::kOwnLogLevel) {
    steps.push_back("log-level " + LogLevelName(bench.LogLevel()));
  }
  AddProcesses(steps, bench.Processes());
  AddFaults(steps, bench.Hardware().Faults());
  return steps;
}

}  // namespace

Steps StepsTo(const CBench& bench, const Json::Value& newSettings, const Json::Value& settings) {
  return Lead(bench, newSettings, settings, "");
}

Steps Prelude(const CBench& bench, const Json::Value& newSettings, const Json::Value& settings) {
  auto steps = Lead(bench, newSettings, settings, LampExpectation(bench));
  steps.emplace_back("mark");
  return steps;
}
