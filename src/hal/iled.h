// One single-colour channel of the status LED, and the light patterns that it shows.
#pragma once

#include <cstdint>
#include <vector>

// One step of a light pattern.
struct CLightStep {
  uint16_t brightness;  // 0 to 1000 on the channel's scale
  uint16_t durationMilliseconds;

  bool operator==(const CLightStep&) const = default;
};

// Shown in order, over and over.
using LightPattern = std::vector<CLightStep>;

// Every operation returns true on success; a failure has been logged and is not retried.
// Threads: no lock of its own; the LED control that owns the channel calls one operation at a time.
class ILed {
 public:
  virtual ~ILed() = default;

  // Makes the channel ready for patterns; once, before everything else. May wait up to 500 ms.
  virtual bool SetupTrigger() = 0;

  // The range into which patterns are mapped, 0 to 1000. A maximum below the present minimum, or a
  // minimum above the present maximum, is refused.
  virtual bool SetMaxBrightness(uint16_t maximum) = 0;
  virtual bool SetMinBrightness(uint16_t minimum) = 0;

  // Steady light, 0 to 1000 within the range, whose minimum becomes 0.
  virtual bool SetBrightness(int32_t brightness) = 0;

  // Ramps linearly from step to step.
  virtual bool SetSmoothPattern(const LightPattern& pattern) = 0;

  // Holds each step and jumps to the next one.
  virtual bool SetInstantPattern(const LightPattern& pattern) = 0;
};
