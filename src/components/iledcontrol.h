// The status LED as one lamp: a colour and a mode.
#pragma once

#include <cstdint>

enum class ELedColor : int32_t { ERed = 0, EGreen, EBlue, EYellow, EWhite };

enum class ELedMode : int32_t {
  EOn = 0,
  EOff,
  EPulsating,
  EFlashing,
  EBlink1,  // a blink code of one pulse; up to EBlink10 the mode counts the pulses
  EBlink2,
  EBlink3,
  EBlink4,
  EBlink5,
  EBlink6,
  EBlink7,
  EBlink8,
  EBlink9,
  EBlink10,
};

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
