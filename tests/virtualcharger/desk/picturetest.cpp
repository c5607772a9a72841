#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtualcharger/desk/lampmessage.h"
#include "virtualcharger/desk/picture.h"
#include "virtualcharger/desk/prelude.h"
#include "virtualcharger/desk/storepicture.h"
#include "virtualcharger/desk/vocabulary.h"
#include "virtualcharger/scenario/scenario.h"

namespace {

using testing::ElementsAre;

// No process runs, and nothing is mounted; the devices are there.
class APicture : public testing::Test {
 protected:
  CBench mBench{{"/nowhere/feedback", false}, {}};
  const CPageClock mClock{mBench.Begin()};
};

TEST_F(APicture, ShowsWhatTheHardwareDoes) {
  mBench.SetLight(345.8);
  mBench.SetFault("green", "", {EFault::Slow, 0, std::chrono::milliseconds(250)});
  SFault counted{EFault::Error, 5};
  counted.writes = 2;
  mBench.SetFault("", "volume", counted);
  mBench.Hardware().ShowLamp({"Yellow", "Flashing"}, 76);
  mBench.Hardware().Sound(4000);
  mBench.Look();
  const auto picture = Picture(mBench, mClock);
  EXPECT_EQ(picture["lamp"]["colour"], "Yellow");
  EXPECT_EQ(picture["lamp"]["mode"], "Flashing");
  EXPECT_EQ(picture["lamp"]["percent"], "76%");
  const auto& green = picture["lamp"]["channels"][1];
  EXPECT_EQ(Compact(green), R"({"maximum":760,"minimum":0,"name":"green",)"
                            R"("pattern":"1000 167 1000 0 0 167 0 0","trigger":"pattern"})");
  EXPECT_EQ(picture["tone"]["beeps"].asInt(), 1);
  EXPECT_NEAR(picture["tone"]["hz"].asDouble(), 4000, 10);
  EXPECT_EQ(picture["light"]["lux"], 345.8);
  EXPECT_EQ(picture["light"]["percent"], 49);
  EXPECT_EQ(Compact(picture["faults"]),
            R"([{"attribute":"volume","detail":"times 2","device":"all","fault":"EIO"},)"
            R"({"attribute":"all","detail":"250ms","device":"green","fault":"slow"}])");
}

TEST_F(APicture, ShowsWhatIsNotThereYet) {
  const auto picture = Picture(mBench, mClock);
  ASSERT_EQ(picture["processes"].size(), 5U);
  for (const auto& process : picture["processes"]) EXPECT_EQ(process["status"], "stopped");
  EXPECT_EQ(picture["lifecycle"]["state"], "");
  EXPECT_EQ(picture["connector"]["state"], "available");
  EXPECT_TRUE(picture["display"]["percent"].isNull());
  EXPECT_EQ(picture["lamp"]["mode"], "Off");
}

TEST_F(APicture, HasTheLightOfTheNextSecondsWithoutGaps) {
  CLampMessage message(mBench.Hardware().Light(), mBench.Hardware().LampWrites(), mClock);
  ASSERT_TRUE(message.Next(std::chrono::steady_clock::now()));
  EXPECT_FALSE(message.Next(std::chrono::steady_clock::now()));
  mBench.Hardware().ShowLamp({"Blue", "Pulsating"}, 50);
  const auto lamp = message.Next(std::chrono::steady_clock::now());
  ASSERT_TRUE(lamp);
  auto end = (*lamp)["from"].asDouble();
  int brightest = 0;
  for (const auto& segment : (*lamp)["channels"][2]) {
    EXPECT_NEAR(segment[0].asDouble(), end, 0.01);
    end = segment[0].asDouble() + segment[1].asDouble();
    brightest = std::max(brightest, segment[2].asInt());
  }
  EXPECT_NEAR(end, (*lamp)["to"].asDouble(), 0.01);
  EXPECT_EQ(brightest, 500);
}

TEST_F(APicture, OfTheStoreTellsWhatIsUnsetAndWhyItCannotBeRead) {
  const auto path = mBench.Processes().Root().Store();
  mBench.SetStored("HmiBuzzerVolume", 2);
  mBench.SetStored("HmiLedIntensityMode", Json::Value());
  const auto store = ReadStorePicture(path);
  EXPECT_EQ(store.settings["HmiBuzzerVolume"], 2);
  EXPECT_TRUE(store.settings["HmiLedIntensityMode"].isNull());
  EXPECT_EQ(store.settings["HwHasLed"], true);
  EXPECT_EQ(store.error, "");
  EXPECT_THAT(ReadStorePicture("/nowhere/store").error, testing::HasSubstr("/nowhere/store"));
}

TEST_F(APicture, OfAnotherChargerBecomesStepsThatLeadThere) {
  const auto path = mBench.Processes().Root().Store();
  const auto before = ReadStorePicture(path).settings;
  mBench.SetStored("HmiLedIntensityMode", "Auto");
  mBench.SetStored("HmiBuzzerVolume", 2.5);
  mBench.SetLight(12.5);
  mBench.SetFault("sensor", "in_illuminance_input", {EFault::Garbage, 0, {}, "no number"});
  mBench.Hardware().Faults().Set("kelo:red:top", "", {EFault::Garbage, 0, {}, "x\"y"});
  const auto steps = Prelude(mBench, before, ReadStorePicture(path).settings);
  EXPECT_THAT(
      steps,
      ElementsAre("set HmiLedIntensityMode \"Auto\"", "# HmiBuzzerVolume held what no step can say",
                  "stop daemon", "start daemon", "light 12.5", "kill daemon",
                  "kill session-manager", "kill diagnostics", "kill board-controller", "kill meter",
                  R"(fault red all garbage x"y)",
                  "fault sensor in_illuminance_input garbage \"no number\"", "mark"));
  for (const auto& step : steps) EXPECT_TRUE(ParseScenario("", step).errors.empty()) << step;
}

TEST(TheVocabulary, OffersOnlyWhatStepsUnderstand) {
  const auto words = Vocabulary(CLibrary("/nowhere"));
  const auto understood = [](const std::string& step) {
    EXPECT_TRUE(ParseScenario("", step).errors.empty()) << step;
  };
  for (const auto& state : words["connectorStates"]) {
    understood("connector " + state["name"].asString());
  }
  for (const auto& error : words["errors"]) {
    understood("error " + error["name"].asString() + " on");
    understood("error " + Compact(error["identifier"]) + " off");
  }
  for (const auto& event : words["events"]) understood(event.asString());
  for (const auto& process : words["processes"]) understood("kill " + process.asString());
  for (const auto& level : words["logLevels"]) understood("log-level " + level.asString());
  for (const auto& setting : words["settings"]) {
    understood("unset " + setting["key"].asString());
    for (const auto& choice : setting["choices"]) {
      understood("set " + setting["key"].asString() + ' ' + choice.asString());
    }
  }
  for (const auto& device : words["devices"]) {
    for (const auto& fault : words["faults"]) {
      const auto takes = fault["takes"].asString();
      understood("fault " + device["name"].asString() + " all " + fault["name"].asString() +
                 (takes == "time"   ? " 2s"
                  : takes == "text" ? " \"a b\""
                                    : ""));
    }
    for (const auto& attribute : device["attributes"]) {
      understood("fault " + device["name"].asString() + ' ' + attribute.asString() + " EIO");
    }
  }
  EXPECT_GT(words["scenarios"].size(), 5U);
}

}  // namespace
