#include <gtest/gtest.h>

#include <utility>

#include "utils/words.h"

namespace {

using namespace std::chrono_literals;

TEST(AHint, NamesTheNearestWordOnlyIfItIsNear) {
  const std::vector<std::string> known{"connector", "error", "mark", "kill", "0"};
  const std::vector<std::pair<std::string, std::string>> cases{
      {"connecter", "connector"}, {"eror", "error"}, {"makr", "mark"},
      {"fill", "kill"},           {"zzz", ""},       {"2", ""},
      {"temperature", ""}};
  for (const auto& [word, hint] : cases) {
    EXPECT_EQ(Hint(word, known), hint.empty() ? "" : "; did you mean \"" + hint + "\"?") << word;
  }
  EXPECT_EQ(Hint("word", {}), "");
}

TEST(ATime, IsANumberWithItsUnit) {
  const std::vector<std::pair<std::string, std::optional<std::chrono::milliseconds>>> cases{
      {"100ms", 100ms}, {"2s", 2s}, {"1.5s", 1500ms}, {"3600s", 1h}, {"3601s", {}},
      {"-1s", {}},      {"2", {}},  {"s", {}},        {"2 s", {}},   {"nans", {}},
  };
  for (const auto& [word, time] : cases) EXPECT_EQ(ParseTime(word), time) << word;
}

}  // namespace
