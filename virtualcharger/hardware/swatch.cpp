#include "virtualcharger/hardware/swatch.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kFloor = 48;

std::uint8_t Encode(std::uint32_t level) {
  if (level == 0) return 0;
  const double linear = std::min(level, 1000U) / 1000.0;
  const double encoded =
      linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(kFloor + (255 - kFloor) * encoded));
}

}  // namespace

std::array<std::uint8_t, 3> SwatchColour(const std::array<std::uint32_t, 3>& levels) {
  return {Encode(levels[0]), Encode(levels[1]), Encode(levels[2])};
}
