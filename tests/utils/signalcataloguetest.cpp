#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "utils/signalcatalogue.h"

namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

TEST(TheSignalCatalogue, ListsEveryIdentifierOfTheWireOnceInAscendingOrder) {
  const auto signals = AllSignals();
  EXPECT_EQ(signals.size(), 225U);
  EXPECT_TRUE(
      std::ranges::is_sorted(signals, std::ranges::less_equal{}, &CSignalDescription::identifier));
  std::set<int> onTheWire;
  for (int number = ipc::ESignalIdentifier_MIN; number <= ipc::ESignalIdentifier_MAX; ++number) {
    if (ipc::ESignalIdentifier_IsValid(number) && number != ipc::ESignalIdentifierNone) {
      onTheWire.insert(number);
    }
  }
  std::set<int> listed;
  for (const auto& signal : signals) {
    listed.insert(signal.identifier);
  }
  EXPECT_EQ(listed, onTheWire);
}

TEST(TheSignalCatalogue, KeepsTheNumbersOfEachTypeAndCategory) {
  std::map<std::string_view, int> types;
  std::map<ESignalCategory, int> categories;
  for (const auto& signal : AllSignals()) {
    ++types[signal.typeName];
    ++categories[signal.category];
  }
  EXPECT_THAT(types, UnorderedElementsAre(
                         Pair("bool", 95), Pair("text", 61), Pair("uint32", 19), Pair("float", 19),
                         Pair("int32", 13), Pair("vector<float>", 6), Pair("vector<int32>", 4),
                         Pair("int64", 3), Pair("vector<text>", 3), Pair("vector<uint32>", 2)));
  EXPECT_THAT(categories, UnorderedElementsAre(Pair(ESignalCategory::ECharger, 164),
                                               Pair(ESignalCategory::EConnector, 61)));
}

TEST(TheSignalCatalogue, KeepsEachRangeToItsKindOfSignal) {
  for (const auto& signal : AllSignals()) {
    const int number = signal.identifier;
    EXPECT_TRUE((number >= 1 && number <= 216) || (number >= 1000 && number <= 2000) ||
                (number >= 10000 && number <= 11000) || (number >= 20000 && number <= 20504))
        << number;
    if (number >= 1000) {
      EXPECT_EQ(signal.typeName, number < 20000 ? "bool" : "text") << number;
    }
    EXPECT_FALSE(signal.name.empty()) << number;
  }
}

TEST(TheSignalCatalogue, StartsEveryBoolAtFalseExceptTwo) {
  std::vector<int> startTrue;
  for (const auto& signal : AllSignals()) {
    if (signal.defaultText == "true") {
      startTrue.push_back(signal.identifier);
    }
  }
  EXPECT_THAT(startTrue, testing::ElementsAre(56, 86));
}

TEST(TheSignalCatalogue, DescribesTheSignalsOfThisProcess) {
  struct SRow {
    int identifier;
    const char* name;
    const char* type;
    const char* defaultText;
    const char* unit;
    ESignalCategory category;
  };
  static constexpr SRow kRows[] = {
      {110, "Light intensity", "float", "-1.0", "nW/cm²", ESignalCategory::ECharger},
      {111, "LED state", "text", "Unknown", "", ESignalCategory::EConnector},
      {112, "Buzzer state", "bool", "false", "", ESignalCategory::ECharger},
      {1105, "Invalid Config Value Error", "bool", "false", "", ESignalCategory::ECharger},
  };
  for (const auto& row : kRows) {
    const auto* signal = FindSignal(static_cast<ipc::ESignalIdentifier>(row.identifier));
    ASSERT_NE(signal, nullptr) << row.name;
    EXPECT_EQ(signal->name, row.name);
    EXPECT_EQ(signal->typeName, row.type) << row.name;
    EXPECT_EQ(signal->defaultText, row.defaultText) << row.name;
    EXPECT_EQ(signal->unit, row.unit) << row.name;
    EXPECT_EQ(signal->category, row.category) << row.name;
  }
  EXPECT_EQ(Signals::LightIntensity.DefaultValue(), -1.0F);
  EXPECT_EQ(Signals::LedState.DefaultValue(), "Unknown");
}

TEST(TheSignalCatalogue, TellsTheTwoPowerFactorLimitsApartThoughTheyShareAName) {
  const auto* error = FindSignal(ipc::ESignalIdentifierPowerFactorLimitError);
  const auto* warning = FindSignal(ipc::ESignalIdentifierPowerFactorLimitWarning);
  ASSERT_NE(error, nullptr);
  ASSERT_NE(warning, nullptr);
  EXPECT_NE(error, warning);
  EXPECT_EQ(error->name, warning->name);
  EXPECT_EQ(error->identifier, 1253);
  EXPECT_EQ(warning->identifier, 10253);
}

TEST(TheSignalCatalogue, FindsNothingForAnUnknownIdentifier) {
  for (const int identifier : {0, 2, 1101, 20505}) {
    EXPECT_EQ(FindSignal(static_cast<ipc::ESignalIdentifier>(identifier)), nullptr) << identifier;
  }
}

}  // namespace
