#include "src/hal/lightsensor.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <system_error>
#include <utility>

#include "platform/log/log.h"
#include "utils/signalcatalogue.h"

namespace {

namespace fs = std::filesystem;

constexpr int kDeviceNumbers = 10;

bool Exists(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

fs::path FindDevicePath(const fs::path& basePath) {
  if (!Exists(basePath)) {
    LOG(Error, "(src/hal/lightsensor:32) Invalid light sensor device path: {}", basePath.string());
    return {};
  }
  for (int number = 0; number < kDeviceNumbers; ++number) {
    const fs::path candidate = basePath / fmt::format("iio:device{}", number);
    if (Exists(candidate)) {
      return candidate;
    }
  }
  LOG(Error, "(src/hal/lightsensor:45) No light sensor device found!");
  return {};
}

}  // namespace

CLightSensor::CLightSensor(const fs::path& basePath, std::shared_ptr<CSysfsAccess> access,
                           uint32_t minimum, uint32_t maximum, float threshold)
    : mDevicePath(FindDevicePath(basePath)),
      mAccess(std::move(access)),
      mMinimum(minimum),
      mMaximum(maximum),
      mLightSignal(&Signals::LightIntensity, ipc::EInstanceTypeAll, threshold) {}

bool CLightSensor::Measure(const std::string& attribute, double factor, uint32_t& value) {
  std::string text;
  if (!mAccess->Read(AttributePath(attribute), text)) {
    return false;
  }
  const double measured = std::round(static_cast<double>(std::stof(text)) * factor);
  // Written so that a text "nan", which is a number to stof, fails too.
  if (!(measured >= 0.0 && measured <= std::numeric_limits<uint32_t>::max())) {
    return false;
  }
  value = static_cast<uint32_t>(measured);
  mLightSignal.Send(value);
  return true;
}

uint8_t CLightSensor::CalculatePercentage(uint32_t value) const {
  const uint32_t clamped = std::clamp(value, mMinimum, mMaximum);
  return static_cast<uint8_t>(100 * (clamped - mMinimum) / (mMaximum - mMinimum));
}

std::string CLightSensor::AttributePath(const std::string& attribute) const {
  return (mDevicePath / attribute).string();
}
