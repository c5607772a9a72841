// How bright it is around the charger.
#pragma once

#include <cstdint>

class ILightSensor {
 public:
  virtual ~ILightSensor() = default;

  virtual void Enable() = 0;
  virtual void Disable() = 0;

  // The latest light as a share of the sensor's range, 0 to 100; 0 until something was measured. A
  // failed reading leaves it as it is.
  virtual uint8_t GetIlluminancePercentage() = 0;
};
