#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/patternled.h"

namespace {

using std::chrono::milliseconds;

class APatternLed : public ::testing::Test {
 protected:
  std::string Read(std::string_view attribute) {
    std::string text;
    const int error = mLed.Read(attribute, text);
    return error == 0 ? text : "error " + std::to_string(error);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& attribute : mLed.Attributes()) names.emplace_back(attribute.name);
    return names;
  }

  void Play(std::string_view pattern) {
    ASSERT_EQ(mLed.Write("trigger", "pattern"), 0);
    ASSERT_EQ(mLed.Write("pattern", pattern), 0);
  }

  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  CPatternLed mLed{mClock};
};

TEST_F(APatternLed, HasPatternAttributesOnlyUnderThePatternTrigger) {
  const std::vector<std::string> bare{"brightness", "max_brightness", "trigger"};
  EXPECT_EQ(Names(), bare);
  EXPECT_EQ(mLed.Write("pattern", "1 2 3 4"), ENOENT);
  EXPECT_EQ(Read("min_pattern_brightness"), "error " + std::to_string(ENOENT));
  EXPECT_EQ(Read("trigger"), "[none] pattern\n");

  Play("1000 0 1000 0");
  EXPECT_EQ(Names().size(), 6U);
  EXPECT_EQ(Read("trigger"), "none [pattern]\n");

  for (const auto& [attribute, text] : {std::pair{"trigger", "none\n"}, {"brightness", "0"}}) {
    Play("1000 0 1000 0");
    EXPECT_EQ(mLed.Write(attribute, text), 0);
    EXPECT_EQ(Names(), bare) << attribute;
    EXPECT_EQ(Read("brightness"), "0\n") << attribute;
  }
}

TEST_F(APatternLed, RefusesWhatTheKernelRefuses) {
  ASSERT_EQ(mLed.Write("trigger", "pattern\n"), 0);
  const struct {
    const char* attribute;
    const char* text;
    int error;
  } cases[] = {
      {"trigger", "heartbeat", EINVAL},
      {"trigger", "pattern ", EINVAL},
      {"trigger", "", 0},
      {"pattern", "1 2 3", EINVAL},
      {"pattern", "-1 0 -1 0", EINVAL},
      {"pattern", "", 0},
      {"brightness", "-1", EINVAL},
      {"brightness", " 5", EINVAL},
      {"brightness", "99999999999999999999", ERANGE},
      {"max_brightness", "5", EACCES},
      {"max_pattern_brightness", "1001", EINVAL},
      {"max_pattern_brightness", "99999999999999999999", EINVAL},
      {"min_pattern_brightness", "-1", EINVAL},
      {"min_pattern_brightness", "0x5", EINVAL},
      {"min_pattern_brightness", "1000\n", 0},
      {"no_such_attribute", "1", ENOENT},
  };
  for (const auto& [attribute, text, error] : cases) {
    EXPECT_EQ(mLed.Write(attribute, text), error) << attribute << ": " << text;
  }
  EXPECT_EQ(Read("trigger"), "none [pattern]\n");
  EXPECT_EQ(Read("min_pattern_brightness"), "1000\n");
}

TEST_F(APatternLed, FreezesAtItsPresentLevelWhenAPatternIsRefusedOrOneByteIsWritten) {
  for (const auto& [text, error] : {std::pair{"nonsense", EINVAL}, {"\n", 0}}) {
    Play("1000 2500 0 2500 ");
    mClock->Advance(milliseconds(10 * 56));
    EXPECT_EQ(mLed.Write("pattern", ""), 0);
    EXPECT_EQ(Read("pattern"), "1000 2500 0 2500\n");
    EXPECT_EQ(mLed.Write("pattern", text), error);
    mClock->Advance(milliseconds(1000));
    EXPECT_EQ(Read("brightness"), "800\n");
    EXPECT_EQ(Read("pattern"), "");
  }
}

TEST_F(APatternLed, StartsAfreshWhenTheTriggerIsWrittenAgain) {
  Play("1000 0 1000 0");
  ASSERT_EQ(mLed.Write("max_pattern_brightness", "300"), 0);
  ASSERT_EQ(mLed.Write("min_pattern_brightness", "20"), 0);
  const auto before = mLed.Attributes().back().generation;
  ASSERT_EQ(mLed.Write("trigger", "pattern"), 0);
  EXPECT_NE(mLed.Attributes().back().generation, before);
  EXPECT_EQ(mLed.Attributes().front().generation, 0U) << "the device's own stay";
  EXPECT_EQ(Read("brightness"), "0\n");
  EXPECT_EQ(Read("pattern"), "");
  EXPECT_EQ(Read("max_pattern_brightness"), "1000\n");
  EXPECT_EQ(Read("min_pattern_brightness"), "0\n");
}

TEST_F(APatternLed, MapsThePatternIntoItsRange) {
  Play("1000 2500 0 2500 ");
  ASSERT_EQ(mLed.Write("max_pattern_brightness", "76"), 0);
  ASSERT_EQ(mLed.Write("min_pattern_brightness", "3"), 0);
  EXPECT_EQ(Read("brightness"), "76\n");
  mClock->Advance(milliseconds(25 * 56));
  EXPECT_EQ(Read("brightness"), "39\n");
  mClock->Advance(milliseconds(25 * 56));
  EXPECT_EQ(Read("brightness"), "3\n");
}

TEST_F(APatternLed, ShowsABrightnessOnlyUntilThePatternsNextTick) {
  Play("1000 167 1000 0 0 167 0 0 ");
  ASSERT_EQ(mLed.Write("brightness", "5000"), 0);
  EXPECT_EQ(Read("brightness"), "1000\n") << "at most the LED's own maximum";
  ASSERT_EQ(mLed.Write("brightness", "400"), 0);
  EXPECT_EQ(Read("brightness"), "400\n");

  const auto now = mClock->Now();
  const auto segments = mLed.Segments(now, now + milliseconds(344));
  ASSERT_EQ(segments.size(), 2U);
  EXPECT_EQ(segments[0].level, 400U);
  EXPECT_EQ(segments[0].duration, milliseconds(172));
  EXPECT_EQ(segments[1].start, now + milliseconds(172));
  EXPECT_EQ(segments[1].level, 0U);

  mClock->Advance(milliseconds(172));
  EXPECT_EQ(Read("brightness"), "0\n");
  mClock->Advance(milliseconds(172));
  EXPECT_EQ(Read("brightness"), "1000\n");
}

TEST_F(APatternLed, GivesOneSegmentForAHeldLevel) {
  ASSERT_EQ(mLed.Write("brightness", "+70\n"), 0);
  const auto now = mClock->Now();
  const auto segments = mLed.Segments(now, now + milliseconds(900));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments[0].level, 70U);
  EXPECT_EQ(segments[0].duration, milliseconds(900));
}

}  // namespace
