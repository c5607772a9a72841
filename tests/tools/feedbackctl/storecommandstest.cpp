#include <cstdlib>

#include "tests/tools/feedbackctl/toolfixture.h"
#include "virtualcharger/page/deskregistry.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class TheStore : public ToolFixture {};

TEST_F(TheStore, TakesOnlyWhatFits) {
  const struct {
    const char* key;
    const char* value;
    const char* written;   // what the store then holds, or
    const char* expected;  // what the refusal names
  } kCases[] = {
      {"HmiBuzzerVolume", "0", "\"HmiBuzzerVolume\" : 0", ""},
      {"HmiBuzzerVolume", "4", "\"HmiBuzzerVolume\" : 4", ""},
      {"HmiBuzzerVolume", "5", "", "found 5, expected an integer from 0 to 4"},
      {"HmiBuzzerVolume", "-1", "", "found -1, expected an integer from 0 to 4"},
      {"HmiBuzzerVolume", "99999999999", "", "found 99999999999, expected an integer"},
      {"HmiLedIntensityMin", "100", "\"HmiLedIntensityMin\" : 100", ""},
      {"HmiLedIntensityMax", "101", "", "found 101, expected an integer from 0 to 100"},
      {"HmiLedIntensityManual", "4.0", "", "found 4.0, expected an integer from 0 to 100"},
      {"HmiLedIntensityMode", "Auto", "\"HmiLedIntensityMode\" : \"Auto\"", ""},
      {"HmiLedIntensityMode", "AUTO", "", "found \"AUTO\", expected Fixed or Auto"},
      {"InstallationComplete", "false", "\"InstallationComplete\" : false", ""},
      {"InstallationComplete", "no", "", "found \"no\", expected true or false"},
      {"HmiBuzzerVolum", "2", "", "; did you mean \"HmiBuzzerVolume\"?"},
      {"HwHasLed", "true", "", "\"HwHasLed\" is not a setting"},
  };
  const std::string before = R"({"other": {"kept": [1]}})";
  for (const auto& [key, value, written, expected] : kCases) {
    WriteStore(before);
    const auto outcome = Run({"set", key, value});
    const bool isTaken = *written != '\0';
    EXPECT_EQ(outcome.status, isTaken ? kDone : kFailed) << key << ' ' << value;
    EXPECT_THAT(outcome.err, HasSubstr(expected));
    if (isTaken) {
      EXPECT_THAT(Store(), AllOf(HasSubstr(written), HasSubstr("kept")));
    } else {
      EXPECT_EQ(Store(), before) << key << ' ' << value;
    }
  }
}

TEST_F(TheStore, GivesBackWhatWasSetAndElseTheDefault) {
  WriteStore("{}");
  EXPECT_EQ(Run({"get", "HmiLedIntensityMode"}).out, "\n");
  EXPECT_EQ(Run({"set", "HmiLedIntensityMode", "auto"}).status, kDone);
  EXPECT_EQ(Run({"get", "HmiLedIntensityMode"}).out, "auto\n");
  EXPECT_EQ(Run({"set", "HmiLedIntensityMode", "null"}).status, kDone);
  EXPECT_EQ(Run({"get", "HmiLedIntensityMode"}).out, "\n");

  EXPECT_EQ(Run({"get", "Mine"}).status, kFailed);
  EXPECT_EQ(Run({"set", "Mine", "some text", "--force"}).status, kDone);
  EXPECT_EQ(Run({"get", "Mine"}).out, "some text\n");
  EXPECT_THAT(Run({"get"}).out, AllOf(HasSubstr("HmiBuzzerVolume        4  (default)"),
                                      HasSubstr("Mine                   some text")));
}

TEST_F(TheStore, IsCheckedToTheLastProblem) {
  const auto path = mRoot.WriteFile("checked.json", R"({"communication": {"MaxConnections": 0},
    "settings": {"HmiBuzzerVolume": 9, "HmiLedIntensityMin": "4", "HmiLedIntensityMode": "Fixed",
                 "InstallationComplete": null, "Other": {}},
    "hwinfo": {"HwHasLed": 1}})");
  const auto outcome = Run({"check-config", path});
  EXPECT_EQ(outcome.status, kFailed);
  for (const char* problem : {
           R"(section "communication", key "MaxConnections": found 0, expected a number from 1 to)",
           R"(section "settings", key "HmiBuzzerVolume": found 9, expected an integer from 0 to 4)",
           R"(section "settings", key "HmiLedIntensityMin": found "4", expected an integer from 0)",
           R"(section "hwinfo", key "HwHasLed": found 1, expected true or false)",
           R"(section "settings", key "Other": note: the daemon does not read it)",
           "problems: 4",
       }) {
    EXPECT_THAT(outcome.out, HasSubstr(path + ": " + problem));
  }

  const auto misplaced = mRoot.WriteFile("misplaced.json", R"({"settings": [], "hwinfo": {}})");
  EXPECT_THAT(Run({"check-config", misplaced}).out,
              HasSubstr(R"(section "settings": found [], expected an object)"));
  for (const char* text : {"{\"settings\": {}", "{\"settings\": {}, \"settings\": {}}", "[]"}) {
    const auto broken = mRoot.WriteFile("broken.json", text);
    EXPECT_EQ(Run({"check-config", broken}).status, kFailed) << text;
    EXPECT_THAT(Run({"check-config", broken}).err, StartsWith("feedbackctl: " + broken)) << text;
  }
  const auto good = mRoot.WriteFile("good.json", R"({"settings": {"HmiBuzzerVolume": 4}})");
  EXPECT_EQ(Run({"check-config", good}).out, good + ": good\n");
}

TEST_F(TheStore, IsThatOfTheVirtualChargerThatIsNamed) {
  WriteStore(R"({"settings": {"HmiBuzzerVolume": 3}})");
  setenv("XDG_RUNTIME_DIR", mRoot.Path().c_str(), 1);
  CDeskRegistry registry("desk");
  registry.Announce({.port = 80, .store = mRoot.Path() / "etc/ovra.json"});
  const auto run = [](const std::vector<std::string>& words) {
    std::ostringstream out;
    std::ostringstream err;
    RunTool(words, {out, err, {}});
    return out.str() + err.str();
  };
  EXPECT_THAT(run({"chargers"}), StartsWith("desk "));
  EXPECT_EQ(run({"get", "HmiBuzzerVolume", "--charger", "desk"}), "3\n");
  EXPECT_THAT(run({"get", "--charger", "desc"}),
              HasSubstr("\"desc\" of this user runs; these do: desk"));
  EXPECT_THAT(run({"get", "--charger", "desk", "--root", "/"}), HasSubstr("cannot both"));
}

}  // namespace
