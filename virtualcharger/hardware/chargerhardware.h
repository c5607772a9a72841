// All hardware that the daemon sees: the status LED, the light sensor, the beeper and the tone.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "virtualcharger/hardware/illuminancesensor.h"
#include "virtualcharger/hardware/mountedhardware.h"
#include "virtualcharger/hardware/statuslight.h"
#include "virtualcharger/hardware/tonefile.h"

// The places of faults, besides kStatusLightDevices and kToneDevice.
inline constexpr auto kSensorDevice = "light/iio:device0";
inline constexpr auto kBeeperDevice = "beeper";

class CChargerHardware {
 public:
  struct SSettings {
    unsigned hz = 250;         // timer frequency of the kernel that plays the lamp's patterns
    bool quickSensor = false;  // readings come at once
  };

  explicit CChargerHardware(const SSettings& settings);

  // Enters the private namespace, for good, and puts everything in its place there. Called while
  // the process has one thread. Returns the error's text.
  [[nodiscard]] std::optional<std::string> Start();

  // Called on any thread when something was written to it, refused or not. Set before it starts.
  void SetListener(const std::function<void()>& listener);

  // As it is before anything is written to it.
  void DarkenLamp();
  // As if it had been written: the lamp with this upper end of its range, in percent, and a tone of
  // so many Hz, 0 for silence.
  void ShowLamp(const SLamp& lamp, int percent);
  void Sound(unsigned hz);

  CFaults& Faults() { return *mFaults; }
  const CFaults& Faults() const { return *mFaults; }
  const CWriteHistory& LampWrites() const { return *mLampWrites; }
  const CStatusLight& Light() const { return mLight; }
  CIlluminanceSensor& Sensor() { return *mSensor; }
  const CIlluminanceSensor& Sensor() const { return *mSensor; }
  const CToneFile& Tone() const { return *mTone; }

  // What the attribute of the device holds, without its line end and whatever the faults; nothing
  // if there is no such attribute now. May block as the device does.
  std::optional<std::string> Attribute(const std::string& device,
                                       const std::string& attribute) const;

 private:
  void WriteLamp(std::size_t channel, const std::string& attribute, const std::string& text);

  const std::shared_ptr<CFaults> mFaults;
  // The lamp has a record of its own: what else is written comes at any time between.
  const std::shared_ptr<CWriteHistory> mLampWrites;
  const std::shared_ptr<CWriteHistory> mOtherWrites;
  const CStatusLight mLight;
  const std::shared_ptr<CIlluminanceSensor> mSensor;
  const std::shared_ptr<CToneFile> mTone;
  const CDeviceTree::Devices mLeds;
  const CDeviceTree::Devices mLinks;
  std::optional<CMountedHardware> mMounted;
};
