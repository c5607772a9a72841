#include <gtest/gtest.h>

#include "virtualcharger/hardware/pattern.h"

namespace {

TEST(APatternText, IsTakenByTheKernelsRulesAndReadsBackNormalised) {
  const struct {
    std::string_view text;
    std::string readBack;
  } cases[] = {
      {"1000 2500 0 2500 ", "1000 2500 0 2500\n"},
      {"1000 0 1000 0", "1000 0 1000 0\n"},
      {"1000 0 1000 0\n", "1000 0 1000 0\n"},
      {" \t1\n2\v3\f\r4 ", "1 2 3 4\n"},
      {"001 02 3 4", "1 2 3 4\n"},
      {"1 2 3 4 x", "1 2 3 4\n"},
      {"1 2 3 4 5", "1 2 3 4\n"},
      {"1 2 3 4-", "1 2 3 4\n"},
      {"4294967297 4294967298 0 4294967295", "1 2 0 4294967295\n"},
      {"x", ""},
      {"\n", ""},
  };
  for (const auto& [text, readBack] : cases) {
    const auto pattern = ParsePattern(text, 1000);
    ASSERT_TRUE(pattern) << text;
    EXPECT_EQ(PatternText(*pattern), readBack) << text;
  }
}

TEST(APatternText, IsRefusedWhereTheKernelRefusesIt) {
  for (const std::string_view text :
       {"1 2", "1 2 3", "1 2 3 4 xx", "1 2 3 4 5 6x7", "1 2 3 4 5 ", "-1 2 3 4", "+1 2 3 4",
        "0x1 2 3 4", "1,2 3 4", "1 2, 3 4", "1001 2 3 4", "1 2 1001 4", "4294968297 2 3 4", "  ",
        "xy", "1.5 2 3 4"}) {
    EXPECT_FALSE(ParsePattern(text, 1000)) << text;
  }
}

TEST(APatternText, EndsAtThePageThatAReadCanGive) {
  std::string text;
  for (int step = 0; step < 1024; ++step) text += "7 0 ";
  const auto pattern = ParsePattern(text, 1000);
  ASSERT_TRUE(pattern);
  EXPECT_EQ(pattern->size(), 1024U);
  EXPECT_EQ(PatternText(*pattern), text.substr(0, 4094) + '\n');
}

}  // namespace
