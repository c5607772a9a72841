#include "virtualcharger/scenario/scenario.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <utility>

#include "utils/words.h"

namespace {

std::string Trimmed(const std::string& line) {
  const auto first = line.find_first_not_of(" \t\r");
  return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

// Sees to it that every repeat has its end.
class CRepeats {
 public:
  void Check(SStep& step, const std::vector<std::string>& words) {
    if (words.front() == "repeat") {
      step.rounds = ParseNumber<int>(words.at(1)).value();
      mOpen.push_back(step.line);
      if (mOpen.size() > kDeepest) {
        throw CParseError(fmt::format("more than {} repeats in one another", kDeepest));
      }
    } else if (words.front() == "end") {
      step.endsRepeat = true;
      if (mOpen.empty()) throw CParseError("there is no \"repeat\" that this could be the end of");
      mOpen.pop_back();
    }
  }

  // The lines of those that have none.
  const std::vector<int>& Open() const { return mOpen; }

 private:
  static constexpr std::size_t kDeepest = 4;

  std::vector<int> mOpen;
};

}  // namespace

SScenario ParseScenario(const std::string& file, std::string_view text) {
  SScenario scenario;
  CRepeats repeats;
  std::istringstream lines{std::string(text)};
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    try {
      const auto words = SplitWords(line);
      if (words.empty()) continue;
      SStep step{number, Trimmed(line), ParseStep(words)};
      repeats.Check(step, words);
      scenario.steps.push_back(std::move(step));
    } catch (const CParseError& error) {
      scenario.errors.push_back(fmt::format("{}:{}: {}", file, number, error.what()));
    }
  }
  for (const int open : repeats.Open()) {
    scenario.errors.push_back(fmt::format("{}:{}: \"repeat\" without its \"end\"", file, open));
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
