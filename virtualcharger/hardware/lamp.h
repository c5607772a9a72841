// What the three channels show together, in the words of the charger's light patterns.
#pragma once

#include <array>
#include <string>

#include "virtualcharger/hardware/patternled.h"

struct SLamp {
  std::string colour;  // "Red", "Green", "Blue", "Yellow", "White"; empty when Off or Mixed
  std::string mode;    // "On", "Off", "Pulsating", "Flashing", "Blink1".."Blink10", "Mixed"

  bool operator==(const SLamp&) const = default;
};

// Channels in the order red, green, blue. Off is whatever shows no light at all. Mixed is light
// that the charger has no name for: another pattern or pair of colours, or lit channels that differ
// in pattern or range. Whether the channels' patterns began together is not looked at.
SLamp DescribeLamp(const std::array<SChannelLight, 3>& channels);

// What the channels play so that the lamp shows this light; darkness for another one.
std::array<Pattern, 3> LampPatterns(const SLamp& lamp);
