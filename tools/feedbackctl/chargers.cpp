#include "tools/feedbackctl/chargers.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/settingtext.h"

SRunningCharger FindCharger(const std::string& name) {
  const auto chargers = RunningChargers();
  const auto found = std::ranges::find(chargers, name, &SRunningCharger::name);
  if (found != chargers.end()) {
    return *found;
  }
  std::vector<std::string> names;
  std::ranges::transform(chargers, std::back_inserter(names), &SRunningCharger::name);
  throw std::runtime_error(fmt::format(
      "no virtual charger \"{}\" of this user runs; {}", name,
      names.empty() ? "none does" : fmt::format("these do: {}", fmt::join(names, ", "))));
}

int RunChargers(const CInvocation& invocation, const CTool& tool) {
  Json::Value json(Json::arrayValue);
  for (const auto& charger : RunningChargers()) {
    Json::Value entry;
    entry["name"] = charger.name;
    entry["pid"] = charger.pid;
    entry["url"] = charger.url;
    entry["store"] = charger.store;
    json.append(entry);
    if (!invocation.Has("--json")) {
      tool.out << fmt::format("{:<16}  {}  {}\n", charger.name, charger.url, charger.store);
    }
  }
  if (invocation.Has("--json")) {
    tool.out << JsonText(json) << '\n';
  }
  return kDone;
}
