// The lamp's light as a colour on a screen.
#pragma once

#include <array>
#include <cstdint>

// sRGB of three linear levels 0..1000 (more counts as 1000), in the order given. 0 is black; every
// other level is at least 48 of 255, so that the faintest light can be told from none.
std::array<std::uint8_t, 3> SwatchColour(const std::array<std::uint32_t, 3>& levels);
