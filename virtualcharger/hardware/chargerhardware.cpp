#include "virtualcharger/hardware/chargerhardware.h"

#include <linux/kd.h>

#include "virtualcharger/hardware/beeper.h"

namespace {

constexpr std::size_t kFewWrites = 100;  // nobody looks at them

}  // namespace

CChargerHardware::CChargerHardware(const SSettings& settings)
    : mFaults(std::make_shared<CFaults>(SystemSteadyClock())),
      mLampWrites(std::make_shared<CWriteHistory>(SystemSteadyClock())),
      mOtherWrites(std::make_shared<CWriteHistory>(SystemSteadyClock(), kFewWrites)),
      mLight(SystemSteadyClock(), settings.hz),
      mSensor(std::make_shared<CIlluminanceSensor>(SystemSteadyClock(), settings.quickSensor)),
      mTone(std::make_shared<CToneFile>(mFaults, SystemSteadyClock())),
      mLeds(mLight.Devices()),
      mLinks{{kSensorDevice, mSensor}, {kBeeperDevice, std::make_shared<CBeeper>()}} {}

void CChargerHardware::SetListener(const std::function<void()>& listener) {
  mLampWrites->SetListener(listener);
  mOtherWrites->SetListener(listener);
  mTone->SetListener(listener);
}

void CChargerHardware::DarkenLamp() {
  for (std::size_t index = 0; index < kStatusLightDevices.size(); ++index) {
    WriteLamp(index, "brightness", "0");
  }
}

void CChargerHardware::ShowLamp(const SLamp& lamp, int percent) {
  const auto patterns = LampPatterns(lamp);
  for (std::size_t index = 0; index < patterns.size(); ++index) {
    WriteLamp(index, "trigger", "pattern");
    WriteLamp(index, "max_pattern_brightness", std::to_string(percent * 10));
    WriteLamp(index, "pattern", PatternText(patterns[index]));
  }
}

void CChargerHardware::WriteLamp(std::size_t channel, const std::string& attribute,
                                 const std::string& text) {
  const int error = mLight.Channels()[channel]->Write(attribute, text);
  mLampWrites->Add(
      {{}, std::string(kStatusLightDevices[channel]), attribute, text, error, text.size()});
}

void CChargerHardware::Sound(unsigned hz) {
  const auto divisor = hz == 0 ? 0 : static_cast<std::uintptr_t>(kToneClock / hz);
  mTone->Control("", KIOCSOUND, divisor);
}

std::optional<std::string> CChargerHardware::Start() {
  if (auto failure = EnterPrivateNamespace()) return failure;
  mMounted.emplace(CFuseServer::Trees{
      {kLedsBinding.source, std::make_shared<CDeviceTree>(mLeds, mFaults, mLampWrites)},
      {kLinksBinding.source, std::make_shared<CDeviceTree>(mLinks, mFaults, mOtherWrites)},
      {kToneBinding.source, mTone}});
  return mMounted->Start({kLedsBinding, kLinksBinding, kToneBinding});
}

std::optional<std::string> CChargerHardware::Attribute(const std::string& device,
                                                       const std::string& attribute) const {
  for (const auto* devices : {&mLeds, &mLinks}) {
    std::string text;
    const auto found = devices->find(device);
    if (found == devices->end() || found->second->Read(attribute, text) != 0) continue;
    if (text.ends_with('\n')) text.pop_back();
    return text;
  }
  return std::nullopt;
}
