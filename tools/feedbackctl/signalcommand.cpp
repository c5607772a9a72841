#include <fmt/format.h>
#include <json/json.h>

#include <algorithm>

#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/words.h"
#include "utils/signalcatalogue.h"
#include "utils/words.h"

namespace {

std::string_view CategoryText(ESignalCategory category) {
  return category == ESignalCategory::EConnector ? "connector" : "charger";
}

Json::Value Describe(const CSignalDescription& signal) {
  Json::Value entry;
  entry["identifier"] = signal.identifier;
  entry["name"] = std::string(signal.name);
  entry["type"] = std::string(signal.typeName);
  // As a value of its type: the texts of all other types are JSON.
  entry["default"] =
      signal.typeName == "text" ? Json::Value(signal.defaultText) : ParseValue(signal.defaultText);
  entry["unit"] = std::string(signal.unit);
  entry["category"] = std::string(CategoryText(signal.category));
  return entry;
}

// All, or the one that the argument names or numbers.
std::span<const CSignalDescription> Asked(const CInvocation& invocation) {
  const auto signals = AllSignals();
  if (invocation.arguments.empty()) {
    return signals;
  }
  const auto& word = invocation.arguments[0];
  const auto number = ParseNumber<int>(word);
  const auto found =
      number ? std::ranges::find(signals, *number, &CSignalDescription::identifier) : signals.end();
  return found == signals.end() ? signals.subspan(Choice(word, "a signal", "SIGNAL"), 1)
                                : std::span(found, 1);
}

}  // namespace

int RunSignals(const CInvocation& invocation, const CTool& tool) {
  const auto signals = Asked(invocation);
  if (invocation.Has("--json")) {
    const char* separator = "[\n";
    for (const auto& signal : signals) {
      tool.out << std::exchange(separator, ",\n") << JsonText(Describe(signal));
    }
    tool.out << "\n]\n";
    return kDone;
  }
  const auto width = std::ranges::max(signals, {}, [](const auto& signal) {
                       return signal.name.size();
                     }).name.size();
  const auto line = [&](const auto& identifier, auto name, auto type, auto value, auto unit,
                        auto category) {
    tool.out << fmt::format("{:>10}  {:<{}}  {:<14}  {:<8}  {:<5}  {}\n", identifier, name, width,
                            type, value, unit, category);
  };
  line("identifier", "name", "type", "default", "unit", "category");
  for (const auto& signal : signals) {
    line(static_cast<int>(signal.identifier), signal.name, signal.typeName, signal.defaultText,
         signal.unit, CategoryText(signal.category));
  }
  return kDone;
}
