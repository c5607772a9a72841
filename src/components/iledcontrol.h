// The status LED as one lamp: a colour and a mode.
#pragma once

#include <cstdint>

#include "utils/ledstate.h"

// Every bool is true on success and false when a channel failed; the failure has been logged.
// Threads: every operation from any thread; one operation's writes never mix with another's.
class ILedControl {
 public:
  virtual ~ILedControl() = default;

  // Shows the colour in the mode and reports a change as the signal "LED state". The same again
  // does nothing, also after a failure. Throws std::out_of_range for an unknown colour or mode.
  virtual bool SetMainLed(ELedColor color, ELedMode mode) = 0;

  // 0 to 100 percent. What is shown is not below the floor (nor below a pulsating lamp's own
  // limits).
  virtual bool SetBrightness(uint8_t percent) = 0;

  // The percentage as it was set, whatever the floor.
  virtual uint8_t GetBrightness() const = 0;

  // The floor, 0 to 100 percent; 0 is none, as after the reset.
  virtual bool SetMinimumBrightness(uint8_t percent) = 0;
  virtual bool ResetMinimumBrightness() = 0;
};
