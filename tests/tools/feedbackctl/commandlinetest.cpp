#include <json/json.h>

#include <algorithm>

#include "tests/tools/feedbackctl/toolfixture.h"

namespace {

using testing::HasSubstr;

class TheCommandLine : public ToolFixture {};

TEST_F(TheCommandLine, IsRefusedWithWhatWasExpected) {
  const struct {
    std::vector<std::string> words;
    const char* expected;
  } kCases[] = {
      {{}, "no command"},
      {{"enabel"}, "\"enabel\" is not a command; did you mean \"enable\"?"},
      {{"enable", "now"}, "\"now\" is too much\nusage: feedbackctl enable\n"},
      {{"set", "HmiBuzzerVolume"}, "VALUE is missing\nusage: feedbackctl set KEY VALUE [--force]"},
      {{"trigger"}, "EVENT is missing\nusage: feedbackctl trigger EVENT [--instance N]"},
      {{"trigger", "bang"}, "expected auth-success, auth-failure, tag-swipe, identify"},
      {{"trigger", "identfy"}, "did you mean \"identify\"?"},
      {{"trigger", "identify", "--instance=2"}, "\"2\" is not a connector; expected 0, 1"},
      {{"trigger", "identify", "--instance="}, "--instance needs a value: N"},
      {{"log-level", "loud"}, "expected trace, debug, info, warning, error, critical, off"},
      {{"get", "--json"}, "--json is not an option of \"get\""},
      {{"watch", "--json=yes"}, "--json takes no value"},
      {{"watch", "--for", "ever"}, "\"ever\" is not a time such as 100ms or 2s"},
      {{"signals", "LedStat"}, "did you mean \"LedState\"?"},
      {{"completion", "powershell"}, "expected bash, zsh"},
      {{"zzz"}, "\"zzz\" is not a command; expected status, watch, lamp"},
      {{"--rot", "/x"}, "\"--rot\" is not an option; did you mean \"--root\"?"},
  };
  for (const auto& [words, expected] : kCases) {
    const auto outcome = Run(words);
    EXPECT_EQ(outcome.status, kUsage) << expected;
    EXPECT_THAT(outcome.err, HasSubstr(expected));
    EXPECT_EQ(outcome.out, "");
  }
}

TEST_F(TheCommandLine, UnderstandsEveryExampleOfItsHelp) {
  WriteStore("{\"communication\": {\"SocketDirectory\": \"" + mSockets.Path() + "\"}}");
  std::istringstream overview(Run({"--help"}).out);
  for (const auto& command : Commands()) {
    std::istringstream help(Run({std::string(command.name), "--help"}).out);
    int examples = 0;
    for (std::string line; std::getline(help, line) || std::getline(overview, line);) {
      if (!line.starts_with("  feedbackctl ")) continue;
      std::istringstream example(line.substr(0, line.find_first_of("|&>")));
      const std::vector<std::string> words{std::istream_iterator<std::string>(example), {}};
      EXPECT_NE(Run({words.begin() + 1, words.end()}).status, kUsage) << line;
      ++examples;
    }
    EXPECT_GT(examples, 0) << command.name;
  }
}

TEST_F(TheCommandLine, FailsWhenItsOutputIsLost) {
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(RunTool({"signals"}, {out, err, {}}), kFailed);
  EXPECT_THAT(err.str(), HasSubstr("cannot write"));
}

TEST_F(TheCommandLine, ListsTheSignalsAsJson) {
  for (const char* one : {"56", "MeterEnergyDirection"}) {
    EXPECT_THAT(Run({"signals", one, "--json"}).out, HasSubstr("\"identifier\":56,")) << one;
  }
  Json::Value signals;
  std::istringstream(Run({"signals", "--json"}).out) >> signals;
  ASSERT_EQ(signals.size(), 225U);
  Json::Value expected;
  std::istringstream(R"({"identifier": 56, "name": "Meter energy direction", "type": "bool",
                         "default": true, "unit": "", "category": "connector"})") >>
      expected;
  EXPECT_EQ(std::count(signals.begin(), signals.end(), expected), 1);
}

}  // namespace
