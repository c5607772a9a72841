#include <gtest/gtest.h>

#include "virtualcharger/hardware/lamp.h"
#include "virtualcharger/hardware/swatch.h"

namespace {

struct SRange {
  std::uint32_t minimum = 0;
  std::uint32_t maximum = 1000;
};

SChannelLight Channel(const std::string& text, SRange range = {}) {
  SChannelLight light{*ParsePattern(text, 1000), range.minimum, range.maximum, 0};
  light.level = light.pattern.empty() ? 0 : light.Shown(light.pattern.front().brightness);
  return light;
}

const std::string kDark = "0 0 0 0";
const std::string kOn = "1000 0 1000 0";

std::string Describe(const std::array<SChannelLight, 3>& channels) {
  const auto lamp = DescribeLamp(channels);
  return lamp.colour + (lamp.colour.empty() ? "" : " ") + lamp.mode;
}

// The texts that the charger writes.
std::vector<std::pair<std::string, std::string>> Modes() {
  std::vector<std::pair<std::string, std::string>> modes{
      {"On", kOn}, {"Pulsating", "1000 2500 0 2500 "}, {"Flashing", "1000 167 1000 0 0 167 0 0 "}};
  std::string pulses;
  for (int count = 1; count <= 10; ++count) {
    pulses += "1000 250 1000 0 0 250 0 0 ";
    const auto pause = count == 10 ? "" : "0 " + std::to_string(5000 - 500 * count) + " 0 0 ";
    modes.emplace_back("Blink" + std::to_string(count), pulses + pause);
  }
  return modes;
}

TEST(ALamp, IsNamedForEveryColourAndModeThatTheChargerShows) {
  const std::pair<std::string, std::string> colours[] = {
      {"Red", "100"}, {"Green", "010"}, {"Blue", "001"}, {"Yellow", "110"}, {"White", "111"}};
  for (const auto& [mode, text] : Modes()) {
    for (const auto& [colour, lit] : colours) {
      for (const auto range : {SRange{0, 1000}, SRange{3, 76}, SRange{0, 1}}) {
        std::array<SChannelLight, 3> channels;
        for (std::size_t index = 0; index < 3; ++index) {
          channels[index] = lit[index] == '1' ? Channel(text, range) : Channel(kDark);
        }
        EXPECT_EQ(Describe(channels), colour + ' ' + mode);
      }
    }
  }
}

TEST(ALamp, IsOffWhereverNoLightIsShown) {
  const SChannelLight untouched;
  EXPECT_EQ(Describe({untouched, untouched, untouched}), "Off");
  EXPECT_EQ(Describe({Channel(kDark), Channel(kDark), untouched}), "Off");
  EXPECT_EQ(Describe({Channel(kOn, {0, 0}), Channel(kDark), Channel(kDark)}), "Off");
}

TEST(ALamp, IsMixedWhereTheChargerHasNoNameForTheLight) {
  const auto dark = Channel(kDark);
  SChannelLight frozen;
  frozen.level = 400;
  const std::array<SChannelLight, 3> cases[] = {
      {Channel(kOn), dark, Channel(kOn)},
      {dark, Channel(kOn), Channel(kOn)},
      {Channel(kOn), Channel("1000 2500 0 2500 "), dark},
      {Channel(kOn), Channel(kOn, {0, 500}), dark},
      {Channel(kOn), Channel(kOn, {3, 1000}), dark},
      {Channel(kDark, {3, 76}), Channel(kOn), dark},
      {Channel("500 0 500 0"), dark, dark},
      {Channel("1000 2500 0 2400 "), dark, dark},
      {Channel("0 250 0 0 1000 250 1000 0 0 4500 0 0 "), dark, dark},
      {frozen, dark, dark},
  };
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    EXPECT_EQ(Describe(cases[index]), "Mixed") << index;
  }
}

TEST(ASwatch, TellsTheFaintestLightFromNoneAndGrowsWithIt) {
  EXPECT_EQ(SwatchColour({0, 1000, 2000}), (std::array<std::uint8_t, 3>{0, 255, 255}));
  EXPECT_GE(SwatchColour({1, 0, 0})[0], 48);
  for (std::uint32_t level = 1; level < 1000; ++level) {
    ASSERT_LE(SwatchColour({level, 0, 0})[0], SwatchColour({level + 1, 0, 0})[0]) << level;
  }
  // Half the light looks far brighter than half.
  EXPECT_GT(SwatchColour({500, 0, 0})[0], 180);
}

}  // namespace
