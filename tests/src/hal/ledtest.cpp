#include <gmock/gmock.h>

#include <functional>

#include "src/hal/led.h"
#include "tests/support/fakesysfs.h"
#include "tests/support/logcapture.h"

namespace {

using EOperation = CFakeSysfs::EOperation;
using Log::ELogLevel;
using testing::ElementsAre;
using testing::IsEmpty;

class ALed : public testing::Test {
 protected:
  // Without the debug lines, in which each pattern is repeated.
  LogCapture mLog{ELogLevel::EInfo};
  const std::shared_ptr<CWriteHistory> mHistory = std::make_shared<CWriteHistory>();
  const std::shared_ptr<CFakeSysfs> mSysfs = std::make_shared<CFakeSysfs>("red", mHistory);
  CLed mLed{mSysfs};
};

TEST_F(ALed, SetsTheTriggerAndWaitsForThePermissionsOfItsAttributes) {
  EXPECT_TRUE(mLed.SetupTrigger());
  EXPECT_THAT(mHistory->Take(),
              ElementsAre("red trigger=pattern", "red max_pattern_brightness awaited for 500"));
  EXPECT_THAT(mLog.Lines(), IsEmpty());
}

TEST_F(ALed, WaitsForNothingWhenTheTriggerIsRefused) {
  mSysfs->Fail(EOperation::EWrite, "trigger");
  EXPECT_FALSE(mLed.SetupTrigger());
  EXPECT_THAT(mHistory->Take(), ElementsAre("red trigger=pattern failed"));
  EXPECT_THAT(mLog.Lines(), ElementsAre(LogCapture::Line{
                                ELogLevel::EError,
                                "(../feedback/src/hal/led:26) Failed to set pattern trigger"}));
}

TEST_F(ALed, FailsToSetUpWithoutThePermissions) {
  mSysfs->Fail(EOperation::EWait, "max_pattern_brightness");
  EXPECT_FALSE(mLed.SetupTrigger());
  EXPECT_THAT(mLog.Lines(),
              ElementsAre(LogCapture::Line{ELogLevel::EError,
                                           "(../feedback/src/hal/led:32) Udev failed to set "
                                           "correct user permissions after trigger"}));
}

TEST_F(ALed, KeepsItsMinimumNotAboveItsMaximum) {
  struct Row {
    bool (CLed::*set)(uint16_t);
    const char* otherLimit;
    const char* otherValue;
    uint16_t value;
    std::vector<std::string> writes;
    std::string warning;
  };
  const auto maximum = "max_pattern_brightness";
  const auto minimum = "min_pattern_brightness";
  const std::string noMinimum = "(../feedback/src/hal/led:45) Failed to read minBrightness value";
  const std::string noMaximum = "(../feedback/src/hal/led:64) Failed to read maxBrightness value";
  const Row rows[] = {
      {&CLed::SetMaxBrightness, minimum, "3", 4, {"red max_pattern_brightness=4"}, ""},
      {&CLed::SetMaxBrightness, minimum, "3", 3, {"red max_pattern_brightness=3"}, ""},
      {&CLed::SetMaxBrightness,
       minimum,
       "3",
       2,
       {},
       "(../feedback/src/hal/led:50) Max brightness (2) cannot be smaller than min brightness (3)"},
      {&CLed::SetMinBrightness, maximum, "76", 75, {"red min_pattern_brightness=75"}, ""},
      {&CLed::SetMinBrightness, maximum, "76", 76, {"red min_pattern_brightness=76"}, ""},
      {&CLed::SetMinBrightness,
       maximum,
       "76",
       77,
       {},
       "(../feedback/src/hal/led:69) Min brightness (77) cannot be greater than max brightness "
       "(76)"},
      {&CLed::SetMaxBrightness, minimum, "", 5, {}, noMinimum},
      {&CLed::SetMaxBrightness, minimum, "none", 5, {}, noMinimum},
      {&CLed::SetMinBrightness, maximum, "1000 mA", 5, {}, noMaximum},
      {&CLed::SetMinBrightness, maximum, "99999999999", 5, {}, noMaximum},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.otherLimit + std::string(" ") + row.otherValue);
    mLog.Clear();
    mSysfs->Set(row.otherLimit, row.otherValue);
    EXPECT_EQ((mLed.*row.set)(row.value), row.warning.empty());
    EXPECT_EQ(mHistory->Take(), row.writes);
    EXPECT_EQ(mLog.Count(ELogLevel::EWarning, row.warning), mLog.Lines().size());
    EXPECT_EQ(mLog.Lines().empty(), row.warning.empty());
  }
}

TEST_F(ALed, WritesNoLimitWhenTheOtherOneCannotBeRead) {
  mSysfs->Fail(EOperation::ERead, "min_pattern_brightness");
  mSysfs->Fail(EOperation::ERead, "max_pattern_brightness");
  EXPECT_FALSE(mLed.SetMaxBrightness(1000));
  EXPECT_FALSE(mLed.SetMinBrightness(0));
  EXPECT_THAT(mHistory->Take(), IsEmpty());
  EXPECT_EQ(mLog.Count(ELogLevel::EWarning, "(../feedback/src/hal/led:45)"), 1u);
  EXPECT_EQ(mLog.Count(ELogLevel::EWarning, "(../feedback/src/hal/led:64)"), 1u);
}

TEST_F(ALed, WritesEachPatternAsTheTriggerReadsIt) {
  const struct {
    std::function<bool(CLed&)> show;
    std::string pattern;
    std::string position;
  } rows[] = {
      {[](CLed& led) {
         return led.SetSmoothPattern({{1000, 2500}, {0, 2500}});
       },
       "1000 2500 0 2500 ", "96"},
      {[](CLed& led) {
         return led.SetInstantPattern({{1000, 167}, {0, 167}});
       },
       "1000 167 1000 0 0 167 0 0 ", "114"},
      {[](CLed& led) {
         return led.SetInstantPattern({{65535, 65535}});
       },
       "65535 65535 65535 0 ", "114"},
      {[](CLed& led) { return led.SetSmoothPattern({}); }, "", "96"},
      {[](CLed& led) { return led.SetInstantPattern({}); }, "", "114"},
  };
  Log::SetLogLevel(ELogLevel::EDebug);
  for (const auto& [show, pattern, position] : rows) {
    mLog.Clear();
    EXPECT_TRUE(show(mLed));
    EXPECT_THAT(mHistory->Take(), ElementsAre("red pattern=" + pattern));
    EXPECT_EQ(mLog.Lines().size(), 1u);
    EXPECT_EQ(mLog.Lines()[0],
              (LogCapture::Line{ELogLevel::EDebug,
                                "(../feedback/src/hal/led:" + position + ") Pattern: " + pattern}));

    mSysfs->Fail(EOperation::EWrite, "pattern");
    EXPECT_FALSE(show(mLed));
    EXPECT_THAT(mHistory->Take(), ElementsAre("red pattern=" + pattern + " failed"));
  }
}

TEST_F(ALed, HoldsALevelAboveAMinimumOfZero) {
  const struct {
    int32_t brightness;
    std::string pattern;
  } rows[] = {{1000, "1000 0 1000 0"}, {0, "0 0 0 0"}, {-5, "-5 0 -5 0"}};
  for (const auto& [brightness, pattern] : rows) {
    mSysfs->Set("min_pattern_brightness", "3");
    EXPECT_TRUE(mLed.SetBrightness(brightness));
    EXPECT_THAT(mHistory->Take(),
                ElementsAre("red min_pattern_brightness=0", "red pattern=" + pattern));
  }
}

TEST_F(ALed, HoldsALevelAlsoWhenItsMinimumStays) {
  mSysfs->Fail(EOperation::EWrite, "min_pattern_brightness");
  EXPECT_TRUE(mLed.SetBrightness(1000));
  mSysfs->Fail(EOperation::ERead, "max_pattern_brightness");
  mSysfs->Fail(EOperation::EWrite, "pattern");
  EXPECT_FALSE(mLed.SetBrightness(0));
  EXPECT_THAT(mHistory->Take(),
              ElementsAre("red min_pattern_brightness=0 failed", "red pattern=1000 0 1000 0",
                          "red pattern=0 0 0 0 failed"));
}

TEST_F(ALed, TracesTheOperationsThatItRuns) {
  Log::SetLogLevel(ELogLevel::ETrace);
  mLed.SetBrightness(0);
  EXPECT_THAT(mLog.Lines(),
              ElementsAre(LogCapture::Line{ELogLevel::ETrace, "CLed::SetBrightness"},
                          LogCapture::Line{ELogLevel::ETrace, "CLed::SetMinBrightness"}));
}

}  // namespace
