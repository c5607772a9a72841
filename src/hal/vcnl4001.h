// The Vishay VCNL4001 light sensor.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>

#include "src/hal/lightsensor.h"

// Takes a reading whenever it is asked for the percentage while it is enabled, and one with Enable.
// These two throw what Measure throws.
//
// Threads: Enable and GetIlluminancePercentage one at a time, Disable from any thread.
class CVcnl4001 : public CLightSensor {
 public:
  CVcnl4001(const std::filesystem::path& basePath, std::shared_ptr<CSysfsAccess> access,
            uint32_t minimum, uint32_t maximum);

  void Enable() override;
  void Disable() override;
  uint8_t GetIlluminancePercentage() override;

 private:
  bool ReadIlluminance(uint32_t& value);

  uint8_t mPercentage = 0;
};
