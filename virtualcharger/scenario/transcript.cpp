#include "virtualcharger/scenario/transcript.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "virtualcharger/hardware/swatch.h"

namespace {

constexpr std::size_t kStepWidth = 32;
constexpr std::size_t kLampWidth = 16;
constexpr std::size_t kPatternWidth =
    13;  // at least; a longer pattern takes what the line has left
constexpr std::size_t kBeforePatterns = 6 + 1 + kStepWidth + 1 + 4 + 2 * (1 + kLampWidth) + 1;
constexpr auto kIndent = "        ";
constexpr auto kSay = "say ";
constexpr auto kExpect = "expect ";

bool WantsColours(std::FILE* output) {
  const char* refused = std::getenv("NO_COLOR");
  return isatty(fileno(output)) != 0 && (refused == nullptr || *refused == '\0');
}

std::string Fit(const std::string& text, std::size_t width) {
  if (text.size() <= width) return fmt::format("{:{}}", text, width);
  return text.substr(0, width - 1) + "…";
}

std::string Swatch(const SView& view, bool colours) {
  const bool lit = view.levels != std::array<std::uint32_t, 3>{};
  if (!colours) return lit ? "lit " : "dark";
  const auto colour = SwatchColour(view.levels);
  return fmt::format("\x1b[48;2;{};{};{}m    \x1b[0m", colour[0], colour[1], colour[2]);
}

// The terminal's width; elsewhere a line may be as long as it likes.
std::size_t LineWidth(std::FILE* output) {
  winsize size{};
  return ioctl(fileno(output), TIOCGWINSZ, &size) == 0 && size.ws_col > 0
             ? size.ws_col
             : std::numeric_limits<std::size_t>::max();
}

// The longest gives way first.
std::string FitPatterns(const std::array<std::string, 3>& patterns, std::size_t width) {
  std::array<std::size_t, 3> widths{};
  std::ranges::transform(patterns, widths.begin(), [](const std::string& pattern) {
    return std::max(pattern.size(), kPatternWidth);
  });
  const std::size_t separators = widths.size() - 1;
  for (auto longest = widths.end();
       std::accumulate(widths.begin(), widths.end(), separators) > width; --*longest) {
    longest = std::ranges::max_element(widths);
    if (*longest == kPatternWidth) break;
  }
  std::string text = Fit(patterns[0], widths[0]) + '|' + Fit(patterns[1], widths[1]) + '|' +
                     Fit(patterns[2], widths[2]);
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string Row(const std::string& time, const std::string& step, const std::string& swatch,
                const std::string& lamp, const std::string& ledState, const std::string& patterns) {
  return fmt::format("{:>6} {} {} {} {} {}\n", time, Fit(step, kStepWidth), swatch,
                     Fit(lamp, kLampWidth), Fit(ledState, kLampWidth), patterns);
}

std::string OrDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

// Steps that change nothing themselves.
bool OnlyLooks(const std::string& step) {
  return step.starts_with(kExpect) || step.starts_with("wait ") || step == "mark";
}

}  // namespace

CTranscript::CTranscript(std::FILE* output)
    : CTranscript(output, WantsColours(output), LineWidth(output)) {}

CTranscript::CTranscript(std::FILE* output, bool colours, std::size_t width)
    : mOutput(output),
      mColours(colours),
      mPatternsWidth(width > kBeforePatterns ? width - kBeforePatterns : 0) {}

void CTranscript::Header() {
  Line(Row("time", "step", "    ", "lamp", "LED state",
           FitPatterns({"red", "green", "blue"}, mPatternsWidth)));
}

void CTranscript::Step(const std::string& text, const SView& view) {
  if (text.starts_with(kSay)) {
    Line((mColours ? "\x1b[1m" : "") + text.substr(std::string_view(kSay).size()) +
         (mColours ? "\x1b[0m\n" : "\n"));
    return;
  }
  const auto time = fmt::format("{:.3f}", std::chrono::duration<double>(view.time).count());
  auto shown = std::tuple(LampWords(view.lamp), view.ledState, view.patterns);
  if (OnlyLooks(text) && shown == mShown) {
    Line(fmt::format("{:>6}   {}{}\n", time, text, text.starts_with(kExpect) ? ": yes" : ""));
    return;
  }
  mShown = std::move(shown);
  Line(Row(
      time, text, Swatch(view, mColours), LampWords(view.lamp), OrDash(view.ledState),
      FitPatterns({OrDash(view.patterns[0]), OrDash(view.patterns[1]), OrDash(view.patterns[2])},
                  mPatternsWidth)));
}

void CTranscript::Note(const std::string& text) {
  Line(fmt::format("{}({})\n", kIndent, text));
}

void CTranscript::Failure(const std::string& headline, const std::string& text) {
  Line(mColours ? fmt::format("\x1b[1;31m{}\x1b[0m\n", headline) : headline + '\n');
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) Line("  " + line + '\n');
}

void CTranscript::Line(const std::string& text) {
  std::fputs(text.c_str(), mOutput);
  std::fflush(mOutput);
}
