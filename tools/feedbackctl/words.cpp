#include "tools/feedbackctl/words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/rpc/bordercheck.h"
#include "tools/feedbackctl/commandline.h"
#include "tools/feedbackctl/settingtext.h"
#include "utils/signalcatalogue.h"
#include "utils/words.h"

namespace {

std::vector<std::string> SignalNames() {
  std::vector<std::string> names;
  for (const auto& signal : AllSignals()) {
    names.push_back(SignalName(signal));
  }
  return names;
}

std::vector<std::string> Connectors() {
  std::vector<std::string> numbers;
  for (int number = 0; number <= Rpc::kConnectorCount; ++number) {
    numbers.push_back(fmt::format("{}", number));
  }
  return numbers;
}

}  // namespace

std::vector<std::string> KnownWords(std::string_view name) {
  if (name == "EVENT") return {"auth-success", "auth-failure", "tag-swipe", "identify"};
  if (name == "LEVEL") return {"trace", "debug", "info", "warning", "error", "critical", "off"};
  if (name == "SHELL") return {"bash", "zsh"};
  if (name == "KEY") return SettingKeys(Settings::kSection);
  if (name == "SIGNAL") return SignalNames();
  if (name == "N") return Connectors();
  return {};
}

std::size_t Choice(const std::string& word, std::string_view what, std::string_view name) {
  const auto known = KnownWords(name);
  const auto found = std::ranges::find(known, word);
  if (found == known.end()) {
    const auto hint = Hint(word, known);
    constexpr std::size_t kFew = 16;
    throw CUsageError(fmt::format("\"{}\" is not {}{}", word, what,
                                  hint.empty() && known.size() <= kFew
                                      ? fmt::format("; expected {}", fmt::join(known, ", "))
                                      : hint));
  }
  return static_cast<std::size_t>(found - known.begin());
}
