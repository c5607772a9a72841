#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "virtualcharger/scenario/options.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

using testing::HasSubstr;

Options Parse(const std::vector<std::string>& arguments) {
  return ParseOptions(arguments, "/opt/bin");
}

TEST(TheCommandLine, RunsAScenarioWithTheDaemonBesideTheProgram) {
  const auto run = std::get<SRunOptions>(Parse({"--scenario", "walk"}));
  EXPECT_THAT(run.scenarios, testing::ElementsAre("walk"));
  EXPECT_EQ(run.daemon, "/opt/bin/feedback");
  EXPECT_EQ(run.hardware.hz, 250U);
  EXPECT_FALSE(run.hardware.quickSensor || run.checkOnly || run.showLog || run.keepRoot ||
               run.asChild);
  EXPECT_EQ(run.junit, "");
}

TEST(TheCommandLine, RunsAChargerWithAPageWhereThereIsNoScenario) {
  const auto plain = std::get<SRunOptions>(Parse({}));
  EXPECT_TRUE(plain.scenarios.empty());
  EXPECT_EQ(plain.name, "");
  EXPECT_FALSE(plain.port || plain.openPage);
  const auto run = std::get<SRunOptions>(Parse({"--open", "--name", "two", "--port", "9000"}));
  EXPECT_EQ(run.name, "two");
  EXPECT_EQ(run.port, 9000);
  EXPECT_TRUE(run.openPage);
}

TEST(TheCommandLine, TakesItsOptionsInAnyOrder) {
  const auto run = std::get<SRunOptions>(Parse(
      {"--log", "--hz", "1000", "--check", "walk", "--daemon", "/d", "--keep", "--quick-sensor"}));
  EXPECT_THAT(run.scenarios, testing::ElementsAre("walk"));
  EXPECT_EQ(run.daemon, "/d");
  EXPECT_EQ(run.hardware.hz, 1000U);
  EXPECT_TRUE(run.hardware.quickSensor && run.checkOnly && run.showLog && run.keepRoot);
}

TEST(TheCommandLine, TakesSeveralScenariosUpToTheNextOption) {
  const auto run =
      std::get<SRunOptions>(Parse({"--scenario", "a", "b", "--junit", "x.xml", "--scenario", "c"}));
  EXPECT_THAT(run.scenarios, testing::ElementsAre("a", "b", "c"));
  EXPECT_EQ(run.junit, "x.xml");
}

TEST(TheCommandLine, BecomesAPeerForTheProgramItself) {
  const auto peer =
      std::get<SPeerSettings>(Parse({"--peer", "diagnostics", "--store", "/s", "--state", "6"}));
  EXPECT_EQ(peer.name, "diagnostics");
  EXPECT_EQ(peer.store, "/s");
  EXPECT_EQ(peer.connectorState, 6);
}

TEST(TheCommandLine, SaysWhatIsWrongWithIt) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"--scenario"}, "--scenario needs a file"},
      {{"--check", "--log"}, "--check needs a file"},
      {{"--scenario", "x", "--junit"}, "--junit needs a value"},
      {{"--junit", "x"}, "--junit needs a scenario"},
      {{"--scenaro", "x"}, R"("--scenaro" is not an option; did you mean "--scenario"?)"},
      {{"walk"}, R"("walk" is not an option)"},
      {{"--hz", "0", "--scenario", "x"}, R"(--hz: "0" is not a number from 1 to 100000)"},
      {{"--hz", "12x", "--scenario", "x"}, R"(--hz: "12x" is not a number)"},
      {{"--port", "70000"}, R"(--port: "70000" is not a number from 1 to 65535)"},
      {{"--peer"}, "--peer needs a name"},
  };
  for (const auto& [arguments, text] : cases) {
    const auto options = Parse(arguments);
    ASSERT_TRUE(std::holds_alternative<SUsageError>(options)) << text;
    EXPECT_THAT(std::get<SUsageError>(options).text, HasSubstr(text));
  }
}

TEST(TheHelp, NamesEveryStepAndEveryOption) {
  EXPECT_TRUE(std::holds_alternative<SHelp>(Parse({"--log", "--help"})));
  const auto help = HelpText();
  for (const auto& kind : StepKinds()) EXPECT_THAT(help, HasSubstr(std::string(kind.syntax)));
  for (const auto* option : {"--scenario", "--check", "--junit", "--daemon", "--hz",
                             "--quick-sensor", "--log", "--keep", "--name", "--port", "--open"}) {
    EXPECT_THAT(help, HasSubstr(option));
  }
}

}  // namespace
