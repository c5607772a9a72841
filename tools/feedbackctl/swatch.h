// The lamp's colour on a terminal.
#pragma once

#include <string>
#include <string_view>

// A few cells in the colour of a "LED state" such as "Red/Blink2", and a blank. Empty without
// colours or for a text that names none.
std::string Swatch(std::string_view ledState, bool hasColours);
