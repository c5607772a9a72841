// How bright the LED and the meter display are in the light around them.
#pragma once

#include <cstdint>

// Threads: no lock; the caller serialises the two operations.
class IBrightnessControl {
 public:
  virtual ~IBrightnessControl() = default;

  // The brightness in percent for this ambient light in percent (above 100 counts as 100). Called
  // over and over, it moves a small step a call towards the brightness that the light asks for.
  virtual uint8_t CalculateBrightness(uint8_t illuminance) = 0;

  // The ends of the brightness in percent, the maximum first. A brightness outside is moved to the
  // nearer end at once.
  virtual void SetRange(uint8_t maximum, uint8_t minimum) = 0;
};
