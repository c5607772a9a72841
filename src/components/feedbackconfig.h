// What the raw values of the settings mean. No state.
#pragma once

#include "src/components/ifeedbackconfig.h"

class CFeedbackConfig : public IFeedbackConfig {
 public:
  int LimitLedIntensity(int intensity) const override;
  EBrightnessMode ParseBrightnessMode(std::string_view text) const override;
  int LimitBuzzerVolume(int volume) const override;
};
