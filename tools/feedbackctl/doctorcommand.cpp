#include <fmt/format.h>
#include <json/json.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/doctorchecks.h"
#include "tools/feedbackctl/settingtext.h"

namespace {

// In the order of EVerdict.
constexpr std::array<const char*, 3> kVerdicts{"ok", "warning", "failed"};

Checks Examine(const CInvocation& invocation) {
  auto checks = CheckStoreFile(invocation);
  CServices services(invocation);
  checks.push_back(CheckSocketDirectory(services.Directory()));
  for (auto& more : {CheckServices(invocation, services), CheckHardware(invocation, services)}) {
    std::ranges::copy(more, std::back_inserter(checks));
  }
  return checks;
}

std::string VerdictText(EVerdict verdict) {
  return kVerdicts.at(static_cast<std::size_t>(verdict));
}

Json::Value AsJson(const Checks& checks) {
  Json::Value json(Json::arrayValue);
  for (const auto& check : checks) {
    Json::Value entry;
    entry["check"] = check.name;
    entry["verdict"] = VerdictText(check.verdict);
    entry["found"] = check.found;
    entry["remedy"] = check.remedy;
    json.append(entry);
  }
  return json;
}

}  // namespace

int RunDoctor(const CInvocation& invocation, const CTool& tool) {
  const auto checks = Examine(invocation);
  if (invocation.Has("--json")) {
    tool.out << JsonText(AsJson(checks)) << '\n';
  } else {
    for (const auto& [verdict, name, found, remedy] : checks) {
      tool.out << fmt::format("{:<8} {:<16}  {}{}{}\n", VerdictText(verdict), name, found,
                              remedy.empty() ? "" : "; ", remedy);
    }
  }
  return std::ranges::count(checks, EVerdict::EFailed, &SCheck::verdict) == 0 ? kDone : kFailed;
}
