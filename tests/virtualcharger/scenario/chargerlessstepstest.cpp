#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "tests/virtualcharger/scenario/recordingcharger.h"
#include "virtualcharger/scenario/names.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

using testing::HasSubstr;

std::string Done(const std::string& line) {
  RecordingCharger charger;
  charger.Do(ParseStep(SplitWords(line)));
  return charger.mDone;
}

std::string Refusal(const std::string& line) {
  try {
    ParseStep(SplitWords(line));
  } catch (const CParseError& error) {
    return error.what();
  }
  return "understood";
}

TEST(AStep, DoesWhatItsLineSays) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"disable", "disable true"},
      {"enable rejected", "enable false"},
      {"card accepted", "event 0 true"},
      {"card refused", "event 1 true"},
      {"card swiped rejected", "event 2 false"},
      {"identify", "event 3 true"},
      {"light 345.8334", "light 345.8334"},
      {"set InstallationComplete false", "set InstallationComplete 5 false"},
      {"set HmiBuzzerVolume -1", "set HmiBuzzerVolume 1 -1"},
      {"set HmiLedIntensityMode Auto", "set HmiLedIntensityMode 4 Auto"},
      {"unset HwHasLed", "set HwHasLed 0 "},
      {"meter refuses", "meter false"},
      {"log-level debug", "log 1"},
      {"expect state fatal-error within 1s", "state 5 1000"},
      {"expect alive", "alive"},
      {"expect brightness 0", "brightness 0 -"},
      {"expect display 100 within 2s", "display 100 2000"},
      {"expect attribute sensor in_illuminance_integration_time 0.800000",
       "attribute sensor in_illuminance_integration_time 0.800000"},
      {"expect beep", "beep -1 -1 -1"},
      {"expect beep 4004", "beep 4004 -1 -1"},
      {"expect beep for 250ms to 1s", "beep -1 250 1000"},
      {"expect report fatal-error", "report 5"},
      {"expect no report", "no report"},
      {R"(expect log any "a b" within 1s)", "log -1 a b 1000"},
      {"expect log warning text", "log 3 text -"},
      {"expect no log critical", "no log 5 []"},
      {R"(expect no log trace "a b")", "no log 0 [a b]"},
      {"expect no beep", "no beep"},
      {"interrupt daemon", "control 1 daemon"},
      {"connector charging", "connector 6"},
      {"connector unavailable", "connector 0"},
      {"connector charging-limited", "connector 12"},
      {"connector 42", "connector 42"},
      {"error 1004 on", "error 1004 true"},
      {"error charge-control-cp-short off  # at last", "error 1002 false"},
      {"error 9999 on", "error 9999 true"},
      {"expect lamp blue pulsating", "lamp blue pulsating -"},
      {"expect lamp red blink10 within 1.5s", "lamp red blink10 1500"},
      {"expect lamp off within 0ms", "lamp off 0"},
      {R"(expect signal "LED state" Green/On)", "signal 111 Green/On -"},
      {R"(expect signal "LED state" "a b" within 20ms)", "signal 111 a b 20"},
      {R"(expect written blue pattern "1000 2500 0 2500 ")",
       "written blue pattern 1000 2500 0 2500 "},
      {R"(expect written red trigger "")", "written red trigger "},
      {"expect written nothing", "nothing"},
      {"mark", "mark"},
      {"kill daemon", "control 0 daemon"},
      {"stop session-manager", "control 1 session-manager"},
      {"start diagnostics", "control 2 diagnostics"},
      {"freeze daemon", "control 3 daemon"},
      {"thaw daemon", "control 4 daemon"},
      {"fault green pattern EIO",
       fmt::format("fault [green] [pattern] kind 0 error {} delay 500 writes 0 garbage", EIO)},
      {"fault all all slow 2s times 3", "fault [] [] kind 1 error 0 delay 2000 writes 3 garbage"},
      {"fault tone all slow times 3", "fault [tone] [] kind 1 error 0 delay 500 writes 3 garbage"},
      {R"(fault sensor in_illuminance_input garbage "nan")",
       "fault [sensor] [in_illuminance_input] kind 3 error 0 delay 500 writes 0 nan"},
      {R"(fault sensor all garbage "")", "fault [sensor] [] kind 3 error 0 delay 500 writes 0 "},
      {"heal", "heal"},
      {"heal green all", "heal [green] []"},
      {"wait 1s", "wait 1000"},
      {"say whatever # comes", ""},
  };
  for (const auto& [line, done] : cases) EXPECT_EQ(Done(line), done) << line;
}

TEST(AStep, ThatIsNotUnderstoodIsToldWhatWasExpected) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"conector 1", R"("conector" is not a step; did you mean "connector"?)"},
      {"expect lmap red on", R"("expect lmap" is not a step; did you mean "expect lamp"?)"},
      {"expcet lamp red on", R"("expcet" is not a step; did you mean "expect"?)"},
      {"expect", R"("expect" is not a step; the nearest are: expect log, )"},
      {"dance", R"("dance" is not a step; the nearest are: disable, enable, card)"},
      {std::string("connector\0 1", 12), "the control character 0x00 at place 10; leave it out"},
      {"say \x1b[1m", "0x1b at place 5"},
      {"enable now", R"("now" is too much; expected: enable [rejected])"},
      {"card eaten", R"("eaten" is not what happens to the card: accepted, refused, swiped)"},
      {"light bright", R"("bright" is not an illuminance in lux from 0 to 1000000)"},
      {"light -1", "is not an illuminance in lux"},
      {"set HmiBuzzerVolum 1", R"(did you mean "HmiBuzzerVolume"?)"},
      {"set HmiBuzzerVolume", "the new value is missing"},
      {"expect state enabeld", R"(did you mean "enabled"?)"},
      {"expect display 101", R"("101" is not a percentage from 0 to 100)"},
      {"expect attribute beeper pattern 1", R"("pattern" is not an attribute: volume)"},
      {"fault tone volume EIO", R"("volume" is not an attribute (or "all"))"},
      {"expect report on", R"("on" is not a state of the daemon: uninitialized)"},
      {"expect log loud x", R"("loud" is not a level (or "any"): trace, debug, info)"},
      {"expect log error", "the text that the line contains is missing"},
      {"expect no log any", R"("any" is not a level: trace)"},
      {"expect beep long", R"("long" is not a pitch in Hz from 20 to 20000)"},
      {"expect beep for 1s", R"("to" is missing)"},
      {"interrupt meter", R"("meter" is not the daemon: daemon)"},
      {"connector", "a connector state is missing; expected: connector STATE"},
      {"connector chargin", R"("chargin" is not a connector state; did you mean "charging"?)"},
      {"connector 1 2", R"("2" is too much; expected: connector STATE)"},
      {"connector 99999999999", R"("99999999999" is not a connector state from 0 to 1000000)"},
      {"error 999 on", R"("999" is not an error from 1000 to 19999; expected: error NUMBER|NAME)"},
      {"error 20000 on", R"("20000" is not an error from 1000 to 19999)"},
      {"error 1004", R"("on" or "off" is missing)"},
      {"error 1004 maybe", R"("maybe" is not "on" or "off": on, off)"},
      {"error charge-control-cp-shrot on", R"(did you mean "charge-control-cp-short"?)"},
      {"expect lamp", "a colour is missing"},
      {"expect lamp purple on", R"("purple" is not a colour)"},
      {"expect lamp red off", R"("off" is not a mode)"},
      {"expect lamp red on within", "a time such as 100ms or 2s is missing"},
      {"expect lamp red on in 2s", R"("in" is too much)"},
      {R"(expect signal "LED stat" x)", R"(did you mean "LED state"?)"},
      {R"(expect signal "LED state")", "the signal's value is missing"},
      {R"(expect written purple pattern "x")", R"("purple" is not a channel (or "nothing"))"},
      {R"(expect written red patern "x")", R"(did you mean "pattern"?)"},
      {"expect written red pattern", "the text that is written is missing"},
      {"expect written nothing now", R"("now" is too much)"},
      {"kill me",
       R"("me" is not a process: daemon, session-manager, diagnostics, board-controller, meter)"},
      {"fault red pattern EIOO", R"("EIOO" is not a fault; did you mean "EIO"?)"},
      {"fault red pattern EIO 2s", R"("2s" is too much)"},
      {"fault red pattern EIO times 0", R"("0" is not a number of writes from 1 to 1000000)"},
      {"heal tone volume",
       R"("volume" is not an attribute (or "all"); expected: heal [DEVICE|all ATTRIBUTE|all])"},
      {"wait 2", R"("2" is not a time such as 100ms or 2s)"},
      {"wait -1s", R"("-1s" is not a time)"},
      {"wait 2h", R"("2h" is not a time)"},
      {"wait nans", R"("nans" is not a time)"},
      {"wait 3601s", "an hour at most"},
  };
  for (const auto& [line, refusal] : cases) EXPECT_THAT(Refusal(line), HasSubstr(refusal)) << line;
}

TEST(AStepKind, ParsesItsOwnExample) {
  for (const auto& kind : StepKinds()) {
    EXPECT_TRUE(kind.example.starts_with(kind.word)) << kind.word;
    EXPECT_TRUE(kind.syntax.starts_with(kind.word)) << kind.word;
    EXPECT_EQ(Refusal(std::string(kind.example)), "understood");
  }
}

TEST(AStepKind, HasItsLineInTheDocumentation) {
  std::ifstream file(SOURCE_DIRECTORY "/docs/scenarios.md");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  std::size_t rows = 0;
  for (auto at = page.find("\n| `"); at != std::string::npos; at = page.find("\n| `", at + 1))
    ++rows;
  EXPECT_EQ(rows, StepKinds().size());
  for (const auto& kind : StepKinds()) {
    std::string syntax(kind.syntax);
    for (auto bar = syntax.find('|'); bar != std::string::npos; bar = syntax.find('|', bar + 2)) {
      syntax.insert(bar, "\\");
    }
    EXPECT_THAT(page,
                HasSubstr(fmt::format("| `{}` | {} | `{}` |\n", syntax, kind.help, kind.example)));
  }
}

TEST(AName, StandsForOneNumberOnly) {
  for (const auto* names : {&ConnectorStates(), &Errors()}) {
    EXPECT_EQ(names->names.size(), names->numbers.size());
    EXPECT_THAT(std::set(names->names.begin(), names->names.end()),
                testing::SizeIs(names->names.size()));
  }
  EXPECT_EQ(ConnectorStates().names.size(), 13U);
}

TEST(ADevice, IsAtItsOwnPlaceInTheHardware) {
  std::set<std::string> places;
  for (const auto& device : Devices()) places.insert(DevicePath(device));
  EXPECT_THAT(places, testing::ElementsAre("beeper", "kelo:blue:top", "kelo:green:top",
                                           "kelo:red:top", "light/iio:device0", "tone"));
  EXPECT_EQ(DevicePath(""), "");
}

}  // namespace
