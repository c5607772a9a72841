#include "src/hal/led.h"

#include <fmt/format.h>

#include <chrono>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "platform/log/log.h"
#include "utils/traceentry.h"
#include "utils/words.h"

namespace {

const std::string kTrigger = "trigger";
const std::string kPattern = "pattern";
const std::string kMaximum = "max_pattern_brightness";
const std::string kMinimum = "min_pattern_brightness";

constexpr std::chrono::milliseconds kPermissionLimit{500};

// A limit that is no number is as useless as one that cannot be read.
std::optional<int> ReadLimit(CSysfsAccess& access, const std::string& attribute) {
  std::string text;
  if (!access.Read(attribute, text)) {
    return std::nullopt;
  }
  return ParseNumber<int>(text);
}

}  // namespace

CLed::CLed(std::shared_ptr<CSysfsAccess> access) : mAccess(std::move(access)) {}

bool CLed::SetupTrigger() {
  TraceEntry<CLed>("SetupTrigger");
  if (!mAccess->Write(kTrigger, "pattern")) {
    LOG(Error, "(../feedback/src/hal/led:26) Failed to set pattern trigger");
    return false;
  }
  // The attributes of the trigger appear with it, but udev opens them to this process only later.
  if (!mAccess->WaitForAccess(kMaximum, kPermissionLimit)) {
    LOG(Error,
        "(../feedback/src/hal/led:32) Udev failed to set correct user permissions after trigger");
    return false;
  }
  return true;
}

bool CLed::SetMaxBrightness(uint16_t maximum) {
  TraceEntry<CLed>("SetMaxBrightness");
  const std::optional<int> minimum = ReadLimit(*mAccess, kMinimum);
  if (!minimum) {
    LOG(Warning, "(../feedback/src/hal/led:45) Failed to read minBrightness value");
    return false;
  }
  if (maximum < *minimum) {
    LOG(Warning,
        "(../feedback/src/hal/led:50) Max brightness ({}) cannot be smaller than min brightness "
        "({})",
        maximum, *minimum);
    return false;
  }
  return mAccess->Write(kMaximum, std::to_string(maximum));
}

bool CLed::SetMinBrightness(uint16_t minimum) {
  TraceEntry<CLed>("SetMinBrightness");
  const std::optional<int> maximum = ReadLimit(*mAccess, kMaximum);
  if (!maximum) {
    LOG(Warning, "(../feedback/src/hal/led:64) Failed to read maxBrightness value");
    return false;
  }
  if (minimum > *maximum) {
    LOG(Warning,
        "(../feedback/src/hal/led:69) Min brightness ({}) cannot be greater than max brightness "
        "({})",
        minimum, *maximum);
    return false;
  }
  return mAccess->Write(kMinimum, std::to_string(minimum));
}

bool CLed::SetBrightness(int32_t brightness) {
  TraceEntry<CLed>("SetBrightness");
  // A minimum left over from a pulsating lamp would keep a dark one glowing. Where it cannot be
  // lowered, a lamp that glows is still better than one that shows the old pattern.
  SetMinBrightness(0);
  // Two equal levels of no duration are how the trigger holds a level.
  return mAccess->Write(kPattern, fmt::format("{0} 0 {0} 0", brightness));
}

bool CLed::SetSmoothPattern(const LightPattern& pattern) {
  TraceEntry<CLed>("SetSmoothPattern");
  std::string text;
  for (const auto& [brightness, duration] : pattern) {
    fmt::format_to(std::back_inserter(text), "{} {} ", brightness, duration);
  }
  LOG(Debug, "(../feedback/src/hal/led:96) Pattern: {}", text);
  return mAccess->Write(kPattern, text);
}

bool CLed::SetInstantPattern(const LightPattern& pattern) {
  TraceEntry<CLed>("SetInstantPattern");
  // The trigger fades between unequal neighbours: a hard edge is the same level again for no time.
  std::string text;
  for (const auto& [brightness, duration] : pattern) {
    fmt::format_to(std::back_inserter(text), "{0} {1} {0} 0 ", brightness, duration);
  }
  LOG(Debug, "(../feedback/src/hal/led:114) Pattern: {}", text);
  return mAccess->Write(kPattern, text);
}
