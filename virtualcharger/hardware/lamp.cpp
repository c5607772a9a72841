#include "virtualcharger/hardware/lamp.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint32_t kFull = 1000;

struct SMode {
  std::string name;
  Pattern pattern;
};

// Each level held, then left by a jump of zero duration.
Pattern HardEdges(const Pattern& levels) {
  Pattern pattern;
  for (const auto& step : levels) {
    pattern.push_back(step);
    pattern.push_back({step.brightness, 0});
  }
  return pattern;
}

Pattern Blink(unsigned pulses) {
  constexpr unsigned slots = 10;
  Pattern levels;
  for (unsigned pulse = 0; pulse < pulses; ++pulse) {
    levels.push_back({kFull, 250});
    levels.push_back({0, 250});
  }
  if (pulses < slots) levels.push_back({0, 500 * (slots - pulses)});
  return HardEdges(levels);
}

const std::vector<SMode>& Modes() {
  static const std::vector<SMode> all = [] {
    std::vector<SMode> modes{{"On", {{kFull, 0}, {kFull, 0}}},
                             {"Pulsating", {{kFull, 2500}, {0, 2500}}},
                             {"Flashing", HardEdges({{kFull, 167}, {0, 167}})}};
    for (unsigned pulses = 1; pulses <= 10; ++pulses) {
      modes.push_back({"Blink" + std::to_string(pulses), Blink(pulses)});
    }
    return modes;
  }();
  return all;
}

struct SColour {
  std::string_view channels;
  std::string_view name;
};

constexpr std::array<SColour, 5> kColours{
    {{"r", "Red"}, {"g", "Green"}, {"b", "Blue"}, {"rg", "Yellow"}, {"rgb", "White"}}};
constexpr std::string_view kChannels = "rgb";

bool IsDark(const SChannelLight& light) {
  if (light.pattern.empty()) return light.level == 0;
  return std::all_of(light.pattern.begin(), light.pattern.end(),
                     [&](const SPatternStep& step) { return light.Shown(step.brightness) == 0; });
}

bool SameLight(const SChannelLight& left, const SChannelLight& right) {
  return left.pattern == right.pattern && left.minimum == right.minimum &&
         left.maximum == right.maximum;
}

}  // namespace

SLamp DescribeLamp(const std::array<SChannelLight, 3>& channels) {
  const SLamp mixed{"", "Mixed"};

  std::string lit;
  const SChannelLight* light = nullptr;
  for (std::size_t index = 0; index < channels.size(); ++index) {
    if (IsDark(channels[index])) continue;
    if (light != nullptr && !SameLight(*light, channels[index])) return mixed;
    light = &channels[index];
    lit += kChannels[index];
  }
  if (light == nullptr) return {"", "Off"};

  const auto* const colour = std::ranges::find(kColours, lit, &SColour::channels);
  const auto mode = std::ranges::find(Modes(), light->pattern, &SMode::pattern);
  if (colour == kColours.end() || mode == Modes().end()) return mixed;
  return {std::string(colour->name), mode->name};
}

std::array<Pattern, 3> LampPatterns(const SLamp& lamp) {
  const Pattern dark{{0, 0}, {0, 0}};
  std::array<Pattern, 3> patterns{dark, dark, dark};
  const auto* const colour = std::ranges::find(kColours, lamp.colour, &SColour::name);
  const auto mode = std::ranges::find(Modes(), lamp.mode, &SMode::name);
  if (colour == kColours.end() || mode == Modes().end()) return patterns;
  for (std::size_t index = 0; index < patterns.size(); ++index) {
    if (colour->channels.find(kChannels[index]) != std::string_view::npos) {
      patterns[index] = mode->pattern;
    }
  }
  return patterns;
}
