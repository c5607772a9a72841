// One single-colour LED with the kernel's pattern trigger, attribute by attribute.
//
// Beyond the mainline trigger it has the range attributes of the charger's kernel: a pattern's
// level 0..1000 is shown as min + level * (max - min) / 1000. A changed range is seen at once.
//
// Threads: may be called from any; every operation is one step.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/device.h"
#include "virtualcharger/hardware/patternplayer.h"

// What one channel plays, at one moment.
struct SChannelLight {
  Pattern pattern;  // empty: the level is held
  std::uint32_t minimum = 0;
  std::uint32_t maximum = 1000;
  std::uint32_t level = 0;  // shown now, inside the range

  std::uint32_t Shown(std::uint32_t patternLevel) const;
};

class CPatternLed : public IDevice {
 public:
  explicit CPatternLed(std::shared_ptr<ISteadyClock> clock, unsigned hz = 250,
                       std::uint32_t maxBrightness = 1000);

  std::vector<SAttribute> Attributes() const override;
  int Read(std::string_view attribute, std::string& text) override;
  int Write(std::string_view attribute, std::string_view text) override;

  SChannelLight Light() const;

  // What is and will be shown in [from, to) if nothing is written; "from" not before the last
  // write.
  std::vector<SLightSegment> Segments(ISteadyClock::TimePoint from,
                                      ISteadyClock::TimePoint to) const;

 private:
  std::optional<std::string> Value(std::string_view attribute) const;
  int WriteTrigger(std::string_view text);
  int WriteBrightness(std::string_view text);
  int WritePattern(std::string_view text);
  void RemoveTrigger();
  SChannelLight LightNow() const;

  const std::shared_ptr<ISteadyClock> mClock;
  const unsigned mHz;
  const std::uint32_t mMaxBrightness;

  mutable std::mutex mMutex;
  // Guarded by mMutex.
  bool mTriggered = false;
  std::uint64_t mGeneration = 0;
  std::uint32_t mMinimum = 0;
  std::uint32_t mMaximum = 1000;
  std::optional<CPatternPlayer> mPlayer;
  std::uint32_t mHeldLevel = 0;
  ISteadyClock::TimePoint mHeldUntil;  // while a pattern plays
};
