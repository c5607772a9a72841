#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "virtualcharger/scenario/words.h"

namespace {

using Words = std::vector<std::string>;

TEST(ALine, IsCutIntoWords) {
  const std::vector<std::pair<std::string, Words>> cases{
      {"", {}},
      {" \t\r", {}},
      {"# only a comment", {}},
      {"  one\ttwo \r", {"one", "two"}},
      {"one # two", {"one"}},
      {"one#two", {"one#two"}},
      {R"(a "b # c" d)", {"a", "b # c", "d"}},
      {R"("trailing blank " "")", {"trailing blank ", ""}},
      {R"(it"s)", {R"(it"s)"}},
  };
  for (const auto& [line, words] : cases) EXPECT_EQ(SplitWords(line), words) << line;
  EXPECT_THROW(SplitWords(R"(say "no end)"), CParseError);
  for (const std::string word : {"", "a b", "#", R"(it"s)"}) {
    EXPECT_EQ(SplitWords(Quoted(word)), Words{word});
  }
}

TEST(AnEnumeratorsName, BecomesWordsWithDashes) {
  EXPECT_EQ(DashedName("SuspendedByCar"), "suspended-by-car");
  EXPECT_EQ(DashedName("UnderVoltageL1"), "under-voltage-l1");
}

}  // namespace
