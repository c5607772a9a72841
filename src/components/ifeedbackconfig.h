// What the raw values of the settings mean.
#pragma once

#include <string_view>

#include "utils/settingscatalogue.h"

// Fixed: LED and display use the manual intensity. Auto: they follow the light sensor.
enum class EBrightnessMode { Fixed = 0, Auto = 1 };

// Threads: every operation from any thread.
class IFeedbackConfig {
 public:
  virtual ~IFeedbackConfig() = default;

  // Clamped to its range, in percent.
  virtual int LimitLedIntensity(int intensity) const = 0;

  // "Fixed", "fixed", "Auto" or "auto"; anything else is logged and means Fixed.
  virtual EBrightnessMode ParseBrightnessMode(std::string_view text) const = 0;

  // Clamped to its range.
  virtual int LimitBuzzerVolume(int volume) const = 0;
};
