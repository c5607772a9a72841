#include "src/components/blinkcode.h"

#include "platform/log/log.h"

namespace {

constexpr int kSlots = 10;
constexpr int kSlotMilliseconds = 500;

}  // namespace

std::optional<LightPattern> BlinkCode(int pulses) {
  if (pulses > kSlots) {
    LOG(Error,
        "(../feedback/src/components/ledcontrol:271) Error coding {} exceeds the number of slots "
        "{}.",
        pulses, kSlots);
    return std::nullopt;
  }
  LightPattern pattern;
  for (int pulse = 0; pulse < pulses; ++pulse) {
    pattern.push_back({1000, kSlotMilliseconds / 2});
    pattern.push_back({0, kSlotMilliseconds / 2});
  }
  if (pulses < kSlots) {
    pattern.push_back({0, static_cast<uint16_t>(kSlotMilliseconds * (kSlots - pulses))});
  }
  return pattern;
}
