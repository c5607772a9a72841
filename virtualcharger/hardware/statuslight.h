// The charger's status LED: its three channels, one beside the other in the folder of LEDs.
#pragma once

#include <array>
#include <memory>
#include <string_view>

#include "virtualcharger/hardware/devicetree.h"
#include "virtualcharger/hardware/lamp.h"

// Red, green, blue.
inline constexpr std::array<std::string_view, 3> kStatusLightDevices{
    "kelo:red:top", "kelo:green:top", "kelo:blue:top"};

class CStatusLight {
 public:
  // The clock plays the patterns; hz is the kernel's timer frequency.
  explicit CStatusLight(const std::shared_ptr<ISteadyClock>& clock, unsigned hz = 250);

  // Red, green, blue; they live as long as this object and the devices that were handed out.
  const std::array<std::shared_ptr<CPatternLed>, 3>& Channels() const { return mChannels; }

  CDeviceTree::Devices Devices() const;

  // What the lamp shows now.
  SLamp Describe() const;

 private:
  std::array<std::shared_ptr<CPatternLed>, 3> mChannels;
};
