// A channel on an LED class device whose kernel trigger is "pattern".
#pragma once

#include <memory>

#include "platform/sysfs/sysfsaccess.h"
#include "src/hal/iled.h"

class CLed : public ILed {
 public:
  // The access is bound to the device's directory.
  explicit CLed(std::shared_ptr<CSysfsAccess> access);

  bool SetupTrigger() override;
  bool SetMaxBrightness(uint16_t maximum) override;
  bool SetMinBrightness(uint16_t minimum) override;
  bool SetBrightness(int32_t brightness) override;
  bool SetSmoothPattern(const LightPattern& pattern) override;
  bool SetInstantPattern(const LightPattern& pattern) override;

 private:
  const std::shared_ptr<CSysfsAccess> mAccess;
};
