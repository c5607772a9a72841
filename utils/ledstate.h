// What the lamp shows: a colour in a mode.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class ELedColor : int32_t { ERed = 0, EGreen, EBlue, EYellow, EWhite };

enum class ELedMode : int32_t {
  EOn = 0,
  EOff,
  EPulsating,
  EFlashing,
  EBlink1,  // a blink code of one pulse; up to EBlink10 the mode counts the pulses
  EBlink2,
  EBlink3,
  EBlink4,
  EBlink5,
  EBlink6,
  EBlink7,
  EBlink8,
  EBlink9,
  EBlink10,
};

struct CLedState {
  ELedColor color;
  ELedMode mode;

  bool operator==(const CLedState&) const = default;
};

// By the colour and by the mode; the signal "LED state" is one of each with a slash between them.
inline constexpr std::array<std::string_view, 5> kLedColorTexts{"Red", "Green", "Blue", "Yellow",
                                                                "White"};
inline constexpr std::array<std::string_view, 14> kLedModeTexts{
    "On",     "Off",    "Pulsating", "Flashing", "Blink1", "Blink2", "Blink3",
    "Blink4", "Blink5", "Blink6",    "Blink7",   "Blink8", "Blink9", "Blink10"};

// "Red/Blink2". Throws std::out_of_range for an unknown colour or mode.
inline std::string LedStateText(const CLedState& led) {
  return std::string(kLedColorTexts.at(static_cast<std::size_t>(led.color))) + '/' +
         std::string(kLedModeTexts.at(static_cast<std::size_t>(led.mode)));
}
