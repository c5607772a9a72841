#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temporarydirectory.h"
#include "tests/virtualcharger/scenario/recordingcharger.h"
#include "virtualcharger/scenario/scenario.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(AScenario, HasOneStepALineWithoutBlankLinesAndComments) {
  const auto scenario = ParseScenario("x", "# a walk\n\n  connector charging \r\n\nmark # here\n");
  EXPECT_THAT(scenario.errors, IsEmpty());
  ASSERT_EQ(scenario.steps.size(), 2U);
  EXPECT_EQ(scenario.steps[0].line, 3);
  EXPECT_EQ(scenario.steps[0].text, "connector charging");
  EXPECT_EQ(scenario.steps[1].line, 5);
  RecordingCharger charger;
  EXPECT_EQ(scenario.steps[0].action(charger), "noted");
  EXPECT_EQ(charger.mDone, "connector 6");
}

TEST(AScenario, TellsEveryBadLineWithItsPlace) {
  const auto scenario = ParseScenario("a/b.scenario", "mrak\nmark\nsay \"\nwait 5\n");
  EXPECT_THAT(scenario.errors, ElementsAre(HasSubstr("a/b.scenario:1: \"mrak\""),
                                           HasSubstr("a/b.scenario:3: a quoted text"),
                                           HasSubstr("a/b.scenario:4: \"5\" is not a time")));
}

TEST(AScenarioFile, MustBeThereAndHaveSteps) {
  const TemporaryDirectory directory;
  const auto missing = (directory.Path() / "missing").string();
  EXPECT_THAT(ReadScenario(missing).errors, ElementsAre(missing + ": No such file or directory"));
  const auto empty = directory.WriteFile("empty", "# nothing\n");
  EXPECT_THAT(ReadScenario(empty).errors, ElementsAre(empty + ": no steps"));
}

TEST(AScenarioFile, OfTheProjectIsUnderstood) {
  int files = 0;
  for (const auto* folder : {"/virtualcharger/scenario/library", "/tests/system"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(SOURCE_DIRECTORY + std::string(folder))) {
      if (entry.path().extension() != ".scenario") continue;
      EXPECT_THAT(ReadScenario(entry.path()).errors, IsEmpty());
      ++files;
    }
  }
  EXPECT_GE(files, 3);
}

}  // namespace
