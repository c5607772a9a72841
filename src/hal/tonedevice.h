// The tone generator of the machine.
#pragma once

#include "src/hal/itonedevice.h"

inline constexpr const char* kTonePath = "/dev/tty0";

// For the moment when no buzzer can be asked any more; what goes wrong is only logged.
void SwitchToneOff();

class CToneDevice : public IToneDevice {
 public:
  int Open(const char* path) override;
  int SetTone(int descriptor, int divisor) override;
  void Close(int descriptor) override;
};
