// The settings that the daemon reads from the store: names, what fits, and defaults, in one place
// for every program that checks, shows or writes them.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace Settings {

// The store's section that the user and the installer set, followed at run time.
inline constexpr const char* kSection = "settings";
inline constexpr const char* kLedIntensityPrefix = "HmiLedIntensity";
inline constexpr const char* kLedIntensityMode = "HmiLedIntensityMode";
inline constexpr const char* kLedIntensityMin = "HmiLedIntensityMin";
inline constexpr const char* kLedIntensityMax = "HmiLedIntensityMax";
inline constexpr const char* kLedIntensityManual = "HmiLedIntensityManual";
inline constexpr const char* kBuzzerVolume = "HmiBuzzerVolume";
inline constexpr const char* kInstallationComplete = "InstallationComplete";

// The section that says what the unit is fitted with, read once.
inline constexpr const char* kHardwareSection = "hwinfo";
inline constexpr const char* kHasLed = "HwHasLed";
inline constexpr const char* kHasMeterDisplay = "HwHasMeterDisplay";
inline constexpr const char* kHasBuzzer = "HwHasBuzzer";

}  // namespace Settings

enum class ESettingType { EBool, EInteger, EBrightnessMode };

struct CSettingDescription {
  std::string_view section;
  std::string_view key;
  ESettingType type;
  int least;  // the range of an integer, both ends included
  int most;
  std::string_view defaultText;  // as JSON
  std::string_view expected;     // what fits, for people
  std::string_view meaning;
};

// What fits a brightness mode; everything else, the default included, means Fixed and is warned of.
inline constexpr auto kBrightnessModes =
    std::to_array<std::string_view>({"Fixed", "fixed", "Auto", "auto"});

// clang-format off
inline constexpr auto kSettings = std::to_array<CSettingDescription>({
    {Settings::kSection,         Settings::kLedIntensityMode,     ESettingType::EBrightnessMode, 0, 0,   "\"\"",      "Fixed or Auto",            "Fixed: the manual intensity; Auto: by the light sensor"},
    {Settings::kSection,         Settings::kLedIntensityMin,      ESettingType::EInteger,        0, 100, "1",         "an integer from 0 to 100", "percent in the dark, mode Auto"},
    {Settings::kSection,         Settings::kLedIntensityMax,      ESettingType::EInteger,        0, 100, "100",       "an integer from 0 to 100", "percent in bright light, mode Auto"},
    {Settings::kSection,         Settings::kLedIntensityManual,   ESettingType::EInteger,        0, 100, "100",       "an integer from 0 to 100", "percent, mode Fixed"},
    {Settings::kSection,         Settings::kBuzzerVolume,         ESettingType::EInteger,        0, 4,   "4",         "an integer from 0 to 4",   "0 is silent"},
    {Settings::kSection,         Settings::kInstallationComplete, ESettingType::EBool,           0, 0,   "true",      "true or false",            "false keeps the connector disabled; read at the first disable"},
    {Settings::kHardwareSection, Settings::kHasLed,               ESettingType::EBool,           0, 0,   "false",     "true or false",            "the unit has the lamp; read at start"},
    {Settings::kHardwareSection, Settings::kHasMeterDisplay,      ESettingType::EBool,           0, 0,   "false",     "true or false",            "the meter has a display; read at start"},
    {Settings::kHardwareSection, Settings::kHasBuzzer,            ESettingType::EBool,           0, 0,   "false",     "true or false",            "the unit has the buzzer; read at start"},
});
// clang-format on

// Null for a key that the daemon does not read.
constexpr const CSettingDescription* FindSetting(std::string_view section, std::string_view key) {
  const auto* const found = std::ranges::find_if(
      kSettings, [&](const auto& each) { return each.section == section && each.key == key; });
  return found == kSettings.end() ? nullptr : found;
}

// The default of an integer of the section that the user sets.
constexpr int DefaultNumber(std::string_view key) {
  int number = 0;
  for (const char digit : FindSetting(Settings::kSection, key)->defaultText) {
    number = number * 10 + (digit - '0');
  }
  return number;
}

// The nearest number inside the range of an integer of that section.
constexpr int Limited(std::string_view key, int number) {
  const auto& setting = *FindSetting(Settings::kSection, key);
  return std::clamp(number, setting.least, setting.most);
}
