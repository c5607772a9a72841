#include "virtualcharger/hardware/pattern.h"

namespace {

constexpr std::size_t kMostSteps = 1024;
constexpr std::size_t kMostReadBytes = 4095;

bool IsBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

void SkipBlanks(std::string_view& text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

// By hand, because the C library's scanf takes signs and the kernel's does not.
std::optional<std::uint32_t> TakeNumber(std::string_view& text) {
  SkipBlanks(text);
  if (text.empty() || !IsDigit(text.front())) return std::nullopt;
  std::uint32_t number = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    number = number * 10 + static_cast<std::uint32_t>(text.front() - '0');
  }
  return number;
}

}  // namespace

std::optional<Pattern> ParsePattern(std::string_view text, std::uint32_t maxBrightness) {
  Pattern pattern;
  // The kernel's loop ends one byte early, to spare itself the usual line end.
  while (text.size() > 1 && pattern.size() < kMostSteps) {
    const auto brightness = TakeNumber(text);
    const auto duration = brightness ? TakeNumber(text) : std::nullopt;
    if (!duration || *brightness > maxBrightness) return std::nullopt;
    SkipBlanks(text);
    pattern.push_back({*brightness, *duration});
  }
  if (pattern.size() == 1) return std::nullopt;
  return pattern;
}

std::string PatternText(const Pattern& pattern) {
  std::string text;
  for (const auto& step : pattern) {
    text += std::to_string(step.brightness) + ' ' + std::to_string(step.duration) + ' ';
  }
  if (text.size() > kMostReadBytes) text.resize(kMostReadBytes);
  if (!text.empty()) text.back() = '\n';
  return text;
}
