// The text of the LED class's "pattern" attribute, read and written as the kernel does it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Brightness on the LED's own scale, duration in ms. Any 32-bit value.
struct SPatternStep {
  std::uint32_t brightness;
  std::uint32_t duration;

  bool operator==(const SPatternStep&) const = default;
};

using Pattern = std::vector<SPatternStep>;

// The steps of one written text; empty for a text of one byte, which only clears. Nothing if the
// kernel refuses the text. Numbers wrap at 2^32 before they are compared with the maximum.
std::optional<Pattern> ParsePattern(std::string_view text, std::uint32_t maxBrightness);

// What the attribute reads back, at most one page; empty for no steps.
std::string PatternText(const Pattern& pattern);
