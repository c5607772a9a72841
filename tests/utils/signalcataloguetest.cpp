#include <gmock/gmock.h>

#include <map>
#include <set>
#include <vector>

#include "utils/signalcatalogue.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

TEST(TheSignalCatalogue, ListsEveryIdentifierOfTheWireOnceInAscendingOrder) {
  std::vector<int> onTheWire;
  for (int number = ipc::ESignalIdentifier_MIN; number <= ipc::ESignalIdentifier_MAX; ++number) {
    if (ipc::ESignalIdentifier_IsValid(number) && number != ipc::ESignalIdentifierNone) {
      onTheWire.push_back(number);
    }
  }
  std::vector<int> listed;
  for (const auto& signal : AllSignals()) {
    listed.push_back(signal.identifier);
  }
  EXPECT_EQ(listed, onTheWire);
  EXPECT_EQ(listed.size(), 225U);
}

TEST(TheSignalCatalogue, KeepsToTheNumbersTypesAndCategories) {
  std::map<std::string_view, int> types;
  std::map<ESignalCategory, int> categories;
  std::set<int> startTrue;
  for (const auto& signal : AllSignals()) {
    const int number = signal.identifier;
    ++types[signal.typeName];
    ++categories[signal.category];
    if (signal.defaultText == "true") {
      startTrue.insert(number);
    }
    if (number >= 1000) {
      EXPECT_EQ(signal.typeName, number < 20000 ? "bool" : "text") << number;
    }
    EXPECT_FALSE(signal.name.empty()) << number;
    EXPECT_EQ(FindSignal(signal.identifier), &signal);
  }
  EXPECT_THAT(types, UnorderedElementsAre(
                         Pair("bool", 95), Pair("text", 61), Pair("uint32", 19), Pair("float", 19),
                         Pair("int32", 13), Pair("vector<float>", 6), Pair("vector<int32>", 4),
                         Pair("int64", 3), Pair("vector<text>", 3), Pair("vector<uint32>", 2)));
  EXPECT_THAT(categories, UnorderedElementsAre(Pair(ESignalCategory::ECharger, 164),
                                               Pair(ESignalCategory::EConnector, 61)));
  EXPECT_THAT(startTrue, ElementsAre(56, 86));
}

TEST(TheSignalCatalogue, DescribesTheSignalsOfThisProcess) {
  const auto describe = [](int identifier) {
    const auto* found = FindSignal(static_cast<ipc::ESignalIdentifier>(identifier));
    return found == nullptr ? std::vector<std::string_view>{}
                            : std::vector{found->name, found->typeName,
                                          std::string_view(found->defaultText), found->unit};
  };
  EXPECT_THAT(describe(110), ElementsAre("Light intensity", "float", "-1.0", "nW/cm²"));
  EXPECT_THAT(describe(111), ElementsAre("LED state", "text", "Unknown", ""));
  EXPECT_THAT(describe(112), ElementsAre("Buzzer state", "bool", "false", ""));
  EXPECT_THAT(describe(1105), ElementsAre("Invalid Config Value Error", "bool", "false", ""));
  EXPECT_EQ(FindSignal(ipc::ESignalIdentifierLedState)->category, ESignalCategory::EConnector);
  // Two signals may share a name.
  EXPECT_EQ(describe(1253), describe(10253));
  for (const int unknown : {0, 2, 1101, 20505}) {
    EXPECT_THAT(describe(unknown), ElementsAre()) << unknown;
  }
}

}  // namespace
