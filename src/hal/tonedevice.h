// The tone generator of the machine.
#pragma once

#include "src/hal/itonedevice.h"

class CToneDevice : public IToneDevice {
 public:
  int Open(const char* path) override;
  int SetTone(int descriptor, int divisor) override;
  void Close(int descriptor) override;
};
