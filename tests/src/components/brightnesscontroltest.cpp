#include <gmock/gmock.h>

#include "src/components/brightnesscontrol.h"
#include "tests/support/logcapture.h"

namespace {

TEST(ABrightnessControl, MovesByTheStepOfItsRangeToWhereTheLightAsksFor) {
  struct Row {
    std::vector<std::pair<uint8_t, uint8_t>> ranges;  // maximum and minimum
    std::vector<uint8_t> light;
    std::vector<int> brightness;
  };
  const Row rows[] = {
      {{}, {80, 80, 2, 2, 3, 0, 0, 0, 0}, {1, 2, 2, 2, 3, 2, 1, 0, 0}},
      {{{255, 200}, {255, 0}}, {255, 100, 0}, {203, 206, 203}},
      {{{160, 10}}, {100, 100, 0}, {12, 14, 12}},
      {{{15, 10}}, {100, 100, 100, 50, 50, 49}, {11, 12, 13, 13, 13, 12}},
      // A narrower range takes hold at once, a wider one step by step.
      {{{100, 90}, {40, 1}}, {100, 0}, {40, 39}},
      {{{100, 90}, {100, 1}}, {0, 0}, {89, 88}},
      // The settings may ask for no width, or for a minimum above the maximum.
      {{{50, 50}}, {0, 100}, {50, 50}},
      {{{20, 80}}, {100, 0, 50}, {20, 20, 20}},
  };
  const LogCapture log(Log::ELogLevel::EDebug);
  for (const auto& [ranges, light, brightness] : rows) {
    CBrightnessControl control;
    for (const auto& [maximum, minimum] : ranges) {
      control.SetRange(maximum, minimum);
    }
    std::vector<int> seen;
    for (const uint8_t illuminance : light) {
      seen.push_back(control.CalculateBrightness(illuminance));
    }
    EXPECT_EQ(seen, brightness) << testing::PrintToString(ranges);
  }
  const LogCapture::Line first[] = {
      {Log::ELogLevel::EDebug, "(src/components/brightnesscontrol:50) Target brightness: 80"},
      {Log::ELogLevel::EDebug,
       "(src/components/brightnesscontrol:58) Brightness setpoint: 1, lower: 0, upper: 1, "
       "mPrevious: 1"}};
  EXPECT_EQ(log.Lines()[0], first[0]);
  EXPECT_EQ(log.Lines()[1], first[1]);
}

}  // namespace
