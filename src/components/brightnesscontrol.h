// Ambient light mapped linearly into a range of brightness, and approached step by step.
#pragma once

#include <cstdint>

#include "src/components/ibrightnesscontrol.h"

// Begins dark, in the range 0 to 100.
class CBrightnessControl : public IBrightnessControl {
 public:
  CBrightnessControl();

  uint8_t CalculateBrightness(uint8_t illuminance) override;
  void SetRange(uint8_t maximum, uint8_t minimum) override;

 private:
  uint8_t mPrevious = 0;  // what was returned last
  uint8_t mMaximum = 100;
  uint8_t mMinimum = 0;
  uint8_t mStep = 1;    // the largest change in one call
  float mScale = 1.0F;  // percent of brightness for one percent of light
};
