#include "src/components/brightnesscontrol.h"

#include <algorithm>
#include <cmath>

#include "platform/log/log.h"
#include "utils/traceentry.h"

namespace {

constexpr uint8_t kFullLight = 100;

// From one end of a wide range to the other in about this many calls.
constexpr int kStepsOfRange = 75;

}  // namespace

CBrightnessControl::CBrightnessControl() {
  TraceEntry<CBrightnessControl>("CBrightnessControl");
}

uint8_t CBrightnessControl::CalculateBrightness(uint8_t illuminance) {
  TraceEntry<CBrightnessControl>("CalculateBrightness");
  const float share = mScale * static_cast<float>(std::min(illuminance, kFullLight));
  const int target = mMinimum + static_cast<uint8_t>(std::lround(static_cast<double>(share)));
  LOG(Debug, "(src/components/brightnesscontrol:50) Target brightness: {}", target);

  const int lower = std::max<int>(mMinimum, mPrevious - mStep);
  const int upper = std::min<int>(mMaximum, mPrevious + mStep);
  const int setpoint = target < lower ? lower : std::min(upper, target);
  mPrevious = static_cast<uint8_t>(setpoint);
  LOG(Debug,
      "(src/components/brightnesscontrol:58) Brightness setpoint: {}, lower: {}, upper: {}, "
      "mPrevious: {}",
      setpoint, lower, upper, mPrevious);
  return mPrevious;
}

void CBrightnessControl::SetRange(uint8_t maximum, uint8_t minimum) {
  TraceEntry<CBrightnessControl>("SetRange");
  const int width = maximum - minimum;
  mStep = std::max<uint8_t>(static_cast<uint8_t>(width / kStepsOfRange), 1);
  mScale = static_cast<float>(width / 100.0);
  mMaximum = maximum;
  mMinimum = minimum;
  if (mPrevious < minimum) {
    mPrevious = minimum;
  } else if (mPrevious > maximum) {
    mPrevious = maximum;
  }
}
