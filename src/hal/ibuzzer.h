// The charger's audible feedback.
#pragma once

#include <cstdint>

class IBuzzer {
 public:
  virtual ~IBuzzer() = default;

  // Begins one short beep, which ends by itself. A failure has been logged.
  virtual void Beep() = 0;

  // The beeper driver's volume level. False, logged, when it cannot be read or is no number; the
  // volume is then left alone. Throws what std::stoi throws for an empty text or a huge number.
  virtual bool ReadVolume(uint8_t& volume) = 0;

  // False when the driver does not take it.
  virtual bool WriteVolume(uint8_t volume) = 0;
};
