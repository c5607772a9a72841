// The settings' names and what their raw values mean.
#pragma once

#include <string_view>

namespace Settings {

// The store's section that the user and the installer set, followed at run time.
inline constexpr const char* kSection = "settings";
inline constexpr const char* kLedIntensityPrefix = "HmiLedIntensity";
inline constexpr const char* kLedIntensityMode = "HmiLedIntensityMode";
inline constexpr const char* kLedIntensityMin = "HmiLedIntensityMin";        // percent
inline constexpr const char* kLedIntensityMax = "HmiLedIntensityMax";        // percent
inline constexpr const char* kLedIntensityManual = "HmiLedIntensityManual";  // percent
inline constexpr const char* kBuzzerVolume = "HmiBuzzerVolume";              // 0 (silent) to 4
inline constexpr const char* kInstallationComplete = "InstallationComplete";

// The section that says what the unit is fitted with, read once.
inline constexpr const char* kHardwareSection = "hwinfo";
inline constexpr const char* kHasLed = "HwHasLed";
inline constexpr const char* kHasMeterDisplay = "HwHasMeterDisplay";
inline constexpr const char* kHasBuzzer = "HwHasBuzzer";

}  // namespace Settings

// Fixed: LED and display use the manual intensity. Auto: they follow the light sensor.
enum class EBrightnessMode { Fixed = 0, Auto = 1 };

// Threads: every operation from any thread.
class IFeedbackConfig {
 public:
  virtual ~IFeedbackConfig() = default;

  // Clamped to 0 to 100 percent.
  virtual int LimitLedIntensity(int intensity) const = 0;

  // "Fixed", "fixed", "Auto" or "auto"; anything else is logged and means Fixed.
  virtual EBrightnessMode ParseBrightnessMode(std::string_view text) const = 0;

  // Clamped to 0 (silent) to 4.
  virtual int LimitBuzzerVolume(int volume) const = 0;
};
