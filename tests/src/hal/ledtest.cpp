#include <gmock/gmock.h>

#include <utility>

#include "src/hal/led.h"
#include "tests/support/fakesysfs.h"
#include "tests/support/logcapture.h"

namespace {

using EOperation = CFakeSysfs::EOperation;
using Log::ELogLevel;
using testing::ElementsAre;

class ALed : public testing::Test {
 protected:
  // Without the debug lines, in which each pattern is repeated.
  LogCapture mLog{ELogLevel::EInfo};
  const std::shared_ptr<CWriteHistory> mHistory = std::make_shared<CWriteHistory>();
  const std::shared_ptr<CFakeSysfs> mSysfs = std::make_shared<CFakeSysfs>("red", mHistory);
  CLed mLed{mSysfs};
};

TEST_F(ALed, SetsTheTriggerAndWaitsForThePermissionsOfItsAttributes) {
  const std::string write = "red trigger=pattern";
  const std::string wait = "red max_pattern_brightness awaited for 500";
  EXPECT_TRUE(mLed.SetupTrigger());
  EXPECT_THAT(mHistory->Take(), ElementsAre(write, wait));
  mSysfs->Fail(EOperation::EWait, "max_pattern_brightness");
  EXPECT_FALSE(mLed.SetupTrigger());
  EXPECT_THAT(mHistory->Take(), ElementsAre(write, wait));
  mSysfs->Fail(EOperation::EWrite, "trigger");
  EXPECT_FALSE(mLed.SetupTrigger());
  EXPECT_THAT(mHistory->Take(), ElementsAre(write + " failed"));
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

TEST_F(ALed, WritesEachPatternAsTheTriggerReadsIt) {
  const std::pair<bool (CLed::*)(const LightPattern&), std::string> rows[] = {
      {&CLed::SetSmoothPattern, "red pattern=65535 65534 0 1 "},
      {&CLed::SetInstantPattern, "red pattern=65535 65534 65535 0 0 1 0 0 "}};
  for (const auto& [show, line] : rows) {
    EXPECT_TRUE((mLed.*show)({{65535, 65534}, {0, 1}}));
    mSysfs->Fail(EOperation::EWrite, "pattern");
    EXPECT_FALSE((mLed.*show)({{65535, 65534}, {0, 1}}));
    EXPECT_THAT(mHistory->Take(), ElementsAre(line, line + " failed"));
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

}  // namespace
