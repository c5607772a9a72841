#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/support/temporarydirectory.h"
#include "tests/virtualcharger/scenario/recordingcharger.h"
#include "virtualcharger/scenario/player.h"

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
  EXPECT_EQ(charger.Do(scenario.steps[0].action), "noted");
  EXPECT_EQ(charger.mDone, "connector 6");
}

TEST(AScenario, TellsEveryBadLineWithItsPlace) {
  const auto scenario = ParseScenario("a/b.scenario", "mrak\nmark\nsay \"\nwait 5\n");
  EXPECT_THAT(scenario.errors, ElementsAre(HasSubstr("a/b.scenario:1: \"mrak\""),
                                           HasSubstr("a/b.scenario:3: a quoted text"),
                                           HasSubstr("a/b.scenario:4: \"5\" is not a time")));
}

// What is done and where, for each step.
std::vector<std::string> Played(const SScenario& scenario) {
  RecordingCharger charger;
  CPlayer player(scenario, [&](const StepAction& action) { return charger.Do(action); });
  std::vector<std::string> done;
  while (const auto* step = player.Step()) {
    done.push_back(step->text + ": " + player.Round());
    if (const auto note = player.Do(); note != "noted") done.back() += " -> " + note;
  }
  return done;
}

TEST(AScenario, RepeatsStepsInRounds) {
  const auto scenario =
      ParseScenario("x", "repeat 2\nmark\nrepeat 2\nheal\nend\nend\nrepeat 1\nend");
  ASSERT_THAT(scenario.errors, IsEmpty());
  const std::vector<std::string> inner{
      "repeat 2: round {0} of 2 -> round {0} of 2, round 1 of 2",
      "heal: round {0} of 2, round 1 of 2",
      "end: round {0} of 2, round 1 of 2 -> round {0} of 2, round 2 of 2",
      "heal: round {0} of 2, round 2 of 2", "end: round {0} of 2, round 2 of 2 -> "};
  std::vector<std::string> expected{"repeat 2:  -> round 1 of 2", "mark: round 1 of 2 -> "};
  for (const auto& line : inner) expected.push_back(fmt::format(fmt::runtime(line), 1));
  expected.insert(expected.end(), {"end: round 1 of 2 -> round 2 of 2", "mark: round 2 of 2 -> "});
  for (const auto& line : inner) expected.push_back(fmt::format(fmt::runtime(line), 2));
  expected.insert(expected.end(),
                  {"end: round 2 of 2 -> ", "repeat 1:  -> round 1 of 1", "end: round 1 of 1 -> "});
  EXPECT_EQ(Played(scenario), expected);
}

TEST(AScenario, WantsAnEndForEachRepeatAndNotTooManyInOneAnother) {
  const auto errors = ParseScenario("x", "end\nrepeat 2\nmark\nrepeat 0\n").errors;
  EXPECT_THAT(errors, ElementsAre(HasSubstr("x:1: there is no \"repeat\""),
                                  HasSubstr("x:4: \"0\" is not a number of rounds"),
                                  HasSubstr("x:2: \"repeat\" without its \"end\"")));
  std::string deep;
  for (int depth = 0; depth < 5; ++depth) deep += "repeat 2\n";
  for (int depth = 0; depth < 5; ++depth) deep += "end\n";
  EXPECT_THAT(ParseScenario("x", deep).errors, ElementsAre(HasSubstr("x:5: more than 4 repeats")));
}

TEST(AScenarioFile, MustBeThereAndHaveSteps) {
  const TemporaryDirectory directory;
  const auto missing = (directory.Path() / "missing").string();
  EXPECT_THAT(ReadScenario(missing).errors, ElementsAre(missing + ": No such file or directory"));
  const auto empty = directory.WriteFile("empty", "# nothing\n");
  EXPECT_THAT(ReadScenario(empty).errors, ElementsAre(empty + ": no steps"));
}

TEST(TheLibrary, IsUnderstoodAndPlaysEveryKindOfStep) {
  std::string steps;
  for (const auto& entry :
       std::filesystem::directory_iterator(SOURCE_DIRECTORY "/virtualcharger/scenario/library")) {
    const auto scenario = ReadScenario(entry.path());
    EXPECT_THAT(scenario.errors, IsEmpty());
    for (const auto& step : scenario.steps) steps += '\n' + step.text + ' ';
  }
  for (const auto& kind : StepKinds()) {
    EXPECT_NE(steps.find(fmt::format("\n{} ", kind.word)), std::string::npos) << kind.word;
  }
}

}  // namespace
