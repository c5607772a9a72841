#include "virtualcharger/scenario/scenario.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace {

std::string Trimmed(const std::string& line) {
  const auto first = line.find_first_not_of(" \t\r");
  return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

SScenario ParseScenario(const std::string& file, std::string_view text) {
  SScenario scenario;
  std::istringstream lines{std::string(text)};
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    try {
      const auto words = SplitWords(line);
      if (!words.empty()) scenario.steps.push_back({number, Trimmed(line), ParseStep(words)});
    } catch (const CParseError& error) {
      scenario.errors.push_back(fmt::format("{}:{}: {}", file, number, error.what()));
    }
  }
  return scenario;
}

SScenario ReadScenario(const std::string& file) {
  std::ifstream stream(file);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream) {
    return {{}, {fmt::format("{}: {}", file, std::generic_category().message(errno))}};
  }
  auto scenario = ParseScenario(file, text);
  if (scenario.steps.empty() && scenario.errors.empty()) {
    scenario.errors.push_back(file + ": no steps");
  }
  return scenario;
}
