// The settings that the daemon reads from the store: names, what fits, and defaults, in one place
// for every program that checks, shows or writes them.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

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
    {"settings", "HmiLedIntensityMode",   ESettingType::EBrightnessMode, 0, 0,   "\"\"",      "Fixed or Auto",            "Fixed: the manual intensity; Auto: by the light sensor"},
    {"settings", "HmiLedIntensityMin",    ESettingType::EInteger,        0, 100, "1",         "an integer from 0 to 100", "percent in the dark, mode Auto"},
    {"settings", "HmiLedIntensityMax",    ESettingType::EInteger,        0, 100, "100",       "an integer from 0 to 100", "percent in bright light, mode Auto"},
    {"settings", "HmiLedIntensityManual", ESettingType::EInteger,        0, 100, "100",       "an integer from 0 to 100", "percent, mode Fixed"},
    {"settings", "HmiBuzzerVolume",       ESettingType::EInteger,        0, 4,   "4",         "an integer from 0 to 4",   "0 is silent"},
    {"settings", "InstallationComplete",  ESettingType::EBool,           0, 0,   "true",      "true or false",            "false keeps the connector disabled; read at the first disable"},
    {"hwinfo",   "HwHasLed",              ESettingType::EBool,           0, 0,   "false",     "true or false",            "the unit has the lamp; read at start"},
    {"hwinfo",   "HwHasMeterDisplay",     ESettingType::EBool,           0, 0,   "false",     "true or false",            "the meter has a display; read at start"},
    {"hwinfo",   "HwHasBuzzer",           ESettingType::EBool,           0, 0,   "false",     "true or false",            "the unit has the buzzer; read at start"},
});
// clang-format on

// Null for a key that the daemon does not read.
constexpr const CSettingDescription* FindSetting(std::string_view section, std::string_view key) {
  const auto* const found = std::ranges::find_if(
      kSettings, [&](const auto& each) { return each.section == section && each.key == key; });
  return found == kSettings.end() ? nullptr : found;
}
