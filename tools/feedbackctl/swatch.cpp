#include "tools/feedbackctl/swatch.h"

#include <algorithm>
#include <array>

#include "utils/ledstate.h"

namespace {

// 24-bit colours, in the order of ELedColor.
constexpr std::array<std::string_view, kLedColorTexts.size()> kColours{
    "255;0;0", "0;255;0", "0;64;255", "255;255;0", "255;255;255"};
constexpr std::string_view kDark = "0;0;0";

}  // namespace

std::string Swatch(std::string_view ledState, bool hasColours) {
  const auto slash = std::min(ledState.find('/'), ledState.size());
  const auto* const found = std::ranges::find(kLedColorTexts, ledState.substr(0, slash));
  if (!hasColours || found == kLedColorTexts.end()) {
    return {};
  }
  const auto colour = ledState.ends_with("/Off")
                          ? kDark
                          : kColours.at(static_cast<std::size_t>(found - kLedColorTexts.begin()));
  return "\x1b[48;2;" + std::string(colour) + "m    \x1b[0m ";
}
