#include "src/components/feedbackconfig.h"

#include "platform/log/log.h"

int CFeedbackConfig::LimitLedIntensity(int intensity) const {
  return Limited(Settings::kLedIntensityManual, intensity);
}

EBrightnessMode CFeedbackConfig::ParseBrightnessMode(std::string_view text) const {
  if (text == "Fixed" || text == "fixed") {
    return EBrightnessMode::Fixed;
  }
  if (text == "Auto" || text == "auto") {
    return EBrightnessMode::Auto;
  }
  LOG(Warning, "(src/components/feedbackconfig:33) Unknown brightness mode \"{}\", using Fixed",
      text);
  return EBrightnessMode::Fixed;
}

int CFeedbackConfig::LimitBuzzerVolume(int volume) const {
  return Limited(Settings::kBuzzerVolume, volume);
}
