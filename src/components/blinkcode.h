// How an error's number of pulses looks.
#pragma once

#include <optional>

#include "src/hal/iled.h"

// A frame of 5 s: 10 slots of 500 ms, the first ones a pulse each, the others dark. Empty (and
// logged) for more pulses than slots.
std::optional<LightPattern> BlinkCode(int pulses);
