#include "virtualcharger/hardware/statuslight.h"

CStatusLight::CStatusLight(const std::shared_ptr<ISteadyClock>& clock, unsigned hz) {
  for (auto& channel : mChannels) channel = std::make_shared<CPatternLed>(clock, hz);
}

CDeviceTree::Devices CStatusLight::Devices() const {
  CDeviceTree::Devices devices;
  for (std::size_t index = 0; index < mChannels.size(); ++index) {
    devices.emplace(kStatusLightDevices[index], mChannels[index]);
  }
  return devices;
}

SLamp CStatusLight::Describe() const {
  return DescribeLamp({mChannels[0]->Light(), mChannels[1]->Light(), mChannels[2]->Light()});
}
