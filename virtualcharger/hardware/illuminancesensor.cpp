#include "virtualcharger/hardware/illuminancesensor.h"

#include <fmt/format.h>

#include <cerrno>
#include <charconv>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr std::string_view kInput = "in_illuminance_input";
constexpr std::string_view kRaw = "in_illuminance_raw";
constexpr std::string_view kIntegrationTime = "in_illuminance_integration_time";

constexpr double kShort = 0.1;  // s
constexpr double kLong = 0.8;
// What a reading takes with them, the driver's own time included.
constexpr milliseconds kShortReading{159};
constexpr milliseconds kLongReading{1028};
constexpr double kRawPerLux = 100;

}  // namespace

CIlluminanceSensor::CIlluminanceSensor(std::shared_ptr<ISteadyClock> clock, bool quick)
    : mClock(std::move(clock)), mQuick(quick) {}

std::vector<SAttribute> CIlluminanceSensor::Attributes() const {
  return {{kInput, false, 0}, {kRaw, false, 0}, {kIntegrationTime, true, 0}};
}

int CIlluminanceSensor::Read(std::string_view attribute, std::string& text) {
  if (attribute == kInput) {
    text = fmt::format("{:.6f}\n", Measure());
  } else if (attribute == kRaw) {
    text = fmt::format("{:.0f}\n", Measure() * kRawPerLux);
  } else if (attribute == kIntegrationTime) {
    const std::lock_guard lock(mMutex);
    text = fmt::format("{:.6f}\n", mLongIntegration ? kLong : kShort);
  } else {
    return ENOENT;
  }
  return 0;
}

int CIlluminanceSensor::Write(std::string_view attribute, std::string_view text) {
  if (attribute != kIntegrationTime)
    return attribute == kInput || attribute == kRaw ? EACCES : ENOENT;
  if (text.ends_with('\n')) text.remove_suffix(1);
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size()) return EINVAL;
  if (seconds != kShort && seconds != kLong) return EINVAL;
  const std::lock_guard lock(mMutex);
  mLongIntegration = seconds == kLong;
  return 0;
}

void CIlluminanceSensor::Close() {
  {
    const std::lock_guard lock(mMutex);
    mClosed = true;
  }
  mClosing.notify_all();
}

void CIlluminanceSensor::SetLux(double lux) {
  const std::lock_guard lock(mMutex);
  mLux = lux;
}

double CIlluminanceSensor::Lux() const {
  const std::lock_guard lock(mMutex);
  return mLux;
}

double CIlluminanceSensor::Measure() {
  std::unique_lock lock(mMutex);
  const auto end = mClock->Now() + (mLongIntegration ? kLongReading : kShortReading);
  while (!mQuick && !mClosed && mClock->Now() < end) mClock->WaitUntil(mClosing, lock, end);
  return mLux;
}
