#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

#include "platform/kvconfig/kvconfig.h"
#include "tests/platform/kvconfig/storefixture.h"

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

using ASection = StoreFixture;

TEST_F(ASection, GivesWhatFitsAndElseTheDefault) {
  const struct {
    const char* value;
    bool boolean = false;
    int number = 7;
    const char* text = "default";
  } cases[] = {
      {.value = "null"},
      {.value = "true", .boolean = true},
      {.value = "-2147483648", .number = std::numeric_limits<int>::min()},
      {.value = "2147483647", .number = std::numeric_limits<int>::max()},
      {.value = R"("5")", .text = "5"},
      {.value = "2147483648"},
      {.value = "-2147483649"},
      {.value = "4.0"},
      {.value = "1e300"},
      {.value = "[true]"},
      {.value = R"({"k": 1})"},
  };
  for (const auto& each : cases) {
    mDirectory.WriteFile("etc/ovra.json", R"({"s": {"k": )" + std::string(each.value) + "}}");
    const auto config = CreateReadOnly(false);
    EXPECT_EQ(config->GetBool("k", false), each.boolean) << each.value;
    EXPECT_EQ(config->GetInt("k", 7), each.number) << each.value;
    EXPECT_EQ(config->GetString("k", "default"), each.text) << each.value;
    EXPECT_EQ(config->GetInt("missing", 8), 8);
    // No value but null suits all three.
    EXPECT_EQ(mErrors.Texts().empty(), std::string("null") == each.value) << each.value;
    mErrors.Clear();
  }
}

TEST_F(ASection, NamesWhatDoesNotFitOnceAChange) {
  mDirectory.WriteFile("etc/ovra.json", R"({"s": {"k": "5"}})");
  const auto config = Create(OnChange());
  config->GetInt("k", 7);
  config->GetInt("k", 7);
  EXPECT_THAT(mErrors.Texts(),
              ElementsAre(AllOf(HasSubstr(mStore.string()), HasSubstr("section \"s\", key \"k\""),
                                HasSubstr("found \"5\", expected an integer of 32 bits"))));
  for (const char* value : {"6", "\"5\""}) {
    Replace(R"({"s": {"k": )" + std::string(value) + "}}");
    mChanges.Until(value[0] == '6' ? "k=6" : "k=5");
    config->GetInt("k", 7);
  }
  EXPECT_EQ(mErrors.Texts().size(), 2U);
}

TEST_F(ASection, ThatCannotBeReadIsReportedWhereItIsNeeded) {
  const struct {
    const char* text;
    std::array<const char*, 3> reasons;  // to a followed, a read-only and an optional section
  } cases[] = {
      {"", {"not a valid store", "not a valid store", nullptr}},
      {R"({"t": {}})", {nullptr, "section \"s\" is missing", nullptr}},
      {R"({"s": 5})", {"found 5, expected an object", "found 5, expected", "found 5, expected"}},
  };
  for (const auto& each : cases) {
    mDirectory.WriteFile("etc/ovra.json", each.text);
    for (size_t i = 0; i < each.reasons.size(); ++i) {
      const std::unique_ptr<KvConfig::IReadOnlyConfig> config =
          i == 0 ? Create() : CreateReadOnly(i == 2);
      EXPECT_EQ(config->GetInt("k", 7), 7);
      ASSERT_EQ(mErrors.Texts().size(), each.reasons[i] ? 1U : 0U) << each.text << i;
      EXPECT_THAT(mErrors.Texts(), Each(HasSubstr(each.reasons[i] ? each.reasons[i] : "")));
      mErrors.Clear();
    }
  }
}

}  // namespace
