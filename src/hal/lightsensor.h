// What the light sensors of the kernel's industrial I/O have in common.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/sysfs/sysfsaccess.h"
#include "src/hal/ilightsensor.h"
#include "utils/reduceddiagnosticssignal.h"

// Threads: Measure is called by one thread at a time; the rest is constant or atomic.
class CLightSensor : public ILightSensor {
 protected:
  // Looks for the device once, in the directory of the base path with the lowest number from 0 to
  // 9; without one every reading fails. The minimum and the maximum (above it) are the measured
  // values of 0 and 100 percent, the threshold is the change of it that diagnostics is told of.
  CLightSensor(const std::filesystem::path& basePath, std::shared_ptr<CSysfsAccess> access,
               uint32_t minimum, uint32_t maximum, float threshold);

  // Reads the attribute times the factor, rounded, and offers it to diagnostics. False when the
  // attribute cannot be read or its number is no measured value (nan, infinite, negative or above
  // 32 bits); the value is then left alone. Throws what std::stof throws for a text that is no
  // number, and Rpc::CommunicationException when diagnostics cannot be told.
  bool Measure(const std::string& attribute, double factor, uint32_t& value);

  // 0 to 100, linear between the minimum and the maximum.
  uint8_t CalculatePercentage(uint32_t value) const;

  std::string AttributePath(const std::string& attribute) const;

  const std::filesystem::path mDevicePath;  // empty without a device
  const std::shared_ptr<CSysfsAccess> mAccess;
  const uint32_t mMinimum;
  const uint32_t mMaximum;
  std::atomic<bool> mEnabled{false};

 private:
  CReducedDiagnosticsSignal<float> mLightSignal;
};
