#include "virtualcharger/hardware/lamp.h"

#include <algorithm>
#include <map>
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

std::vector<SMode> Modes() {
  std::vector<SMode> modes{{"On", {{kFull, 0}, {kFull, 0}}},
                           {"Pulsating", {{kFull, 2500}, {0, 2500}}},
                           {"Flashing", HardEdges({{kFull, 167}, {0, 167}})}};
  for (unsigned pulses = 1; pulses <= 10; ++pulses) {
    modes.push_back({"Blink" + std::to_string(pulses), Blink(pulses)});
  }
  return modes;
}

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
  static const std::vector<SMode> modes = Modes();
  static const std::map<std::string_view, std::string_view> colours{
      {"r", "Red"}, {"g", "Green"}, {"b", "Blue"}, {"rg", "Yellow"}, {"rgb", "White"}};
  const SLamp mixed{"", "Mixed"};

  std::string lit;
  const SChannelLight* light = nullptr;
  for (std::size_t index = 0; index < channels.size(); ++index) {
    if (IsDark(channels[index])) continue;
    if (light != nullptr && !SameLight(*light, channels[index])) return mixed;
    light = &channels[index];
    lit += "rgb"[index];
  }
  if (light == nullptr) return {"", "Off"};

  const auto colour = colours.find(lit);
  const auto mode = std::find_if(modes.begin(), modes.end(), [&](const SMode& candidate) {
    return candidate.pattern == light->pattern;
  });
  if (colour == colours.end() || mode == modes.end()) return mixed;
  return {std::string(colour->second), mode->name};
}
