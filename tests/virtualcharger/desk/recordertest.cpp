#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtualcharger/desk/recorder.h"
#include "virtualcharger/scenario/scenario.h"

namespace {

using namespace std::chrono_literals;

class ARecorder : public testing::Test {
 protected:
  ARecorder() { mRecorder.Begin(mNow, {"disable", "mark"}, mShown); }
  ~ARecorder() override { EXPECT_TRUE(ParseScenario("recorded", mRecorder.Text()).errors.empty()); }

  // Looked at as often as the desk does.
  void Pass(std::chrono::milliseconds time) {
    for (const auto end = mNow + time; mNow < end; mNow += 50ms) mRecorder.Show(mNow, mShown);
  }
  std::size_t Do(const std::string& step) { return mRecorder.Step(mNow, step); }
  std::string Text() const { return mRecorder.Text(); }

  CRecorder::TimePoint mNow{};
  CRecorder::SShown mShown{"green on", "enabled", 100, 2};
  CRecorder mRecorder;
};

TEST_F(ARecorder, ExpectsWhatTheChargerShowedAfterEachStep) {
  Do("connector charging");
  mShown.lamp = "blue on";  // on its way
  Pass(100ms);
  mShown.lamp = "blue pulsating";
  Pass(2s);
  Do("card swiped");
  mShown.beeps = 3;
  Pass(1s);
  Do("set HmiLedIntensityManual 40");
  mShown.display = 40;
  Pass(2s);
  Do("connector authorized");
  mShown.lamp = "off";  // where the next step comes at once
  Pass(50ms);
  Do("disable");
  mShown = {"yellow on", "disabled", 40, 3};
  Pass(100ms);
  mRecorder.End(mNow);
  mShown.lamp = "red on";
  Pass(1s);
  EXPECT_EQ(Text(),
            "disable\nmark\n"
            "connector charging\nexpect lamp blue pulsating\n"
            "card swiped\nexpect beep\n"
            "set HmiLedIntensityManual 40\nexpect display 40\n"
            "connector authorized\n"
            "disable\nexpect state disabled\nexpect lamp yellow on\n");
}

TEST_F(ARecorder, WaitsWhereNothingWasSeenOrItCameLate) {
  Do("light 5");
  Pass(1300ms);
  Do("identify");
  Pass(50ms);
  Do("identify");
  mShown.display = 60;
  mNow += 8s;
  Pass(2s);
  mRecorder.End(mNow);
  EXPECT_EQ(Text(),
            "disable\nmark\nlight 5\nwait 1300ms\nidentify\nidentify\nwait 7000ms\n"
            "expect display 60\n");
}

TEST_F(ARecorder, ExpectsARefusalAndLeavesOutWhatFailed) {
  const auto refused = Do("card accepted");
  const auto failed = Do("enable");
  mRecorder.Ended(failed, false, "diagnostics did not answer\nat all");
  mRecorder.Ended(refused, false, "expected: accepted\nseen:     refused");
  mShown = {"mixed", "", std::nullopt, 2};  // what no scenario can expect
  Pass(2s);
  EXPECT_EQ(Text(),
            "disable\nmark\ncard accepted rejected\n# enable: diagnostics did not answer at "
            "all\n");
}

TEST_F(ARecorder, EndsByItselfWhereItIsForgottenAndSaysSo) {
  mShown.beeps += 2 * CRecorder::kMostLines;
  Pass(50ms);
  EXPECT_FALSE(mRecorder.IsOn());
  const auto text = Text();
  EXPECT_TRUE(text.ends_with("expect beep\n# 2000 lines: the recording has ended by itself\n"));
  EXPECT_LT(text.size(), 15 * CRecorder::kMostLines);
}

}  // namespace
