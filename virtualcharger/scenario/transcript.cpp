#include "virtualcharger/scenario/transcript.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "virtualcharger/hardware/swatch.h"

namespace {

constexpr std::size_t kStepWidth = 30;
constexpr std::size_t kStateWidth = 11;
constexpr std::size_t kLampWidth = 15;
constexpr std::size_t kPercentWidth = 4;
constexpr std::size_t kLedStateWidth = 16;
constexpr std::size_t kBeepsWidth = 5;
constexpr std::size_t kBeforePattern = 6 + 1 + kStepWidth + 1 + kStateWidth + 1 + 4 + 1 +
                                       kLampWidth + 1 + kPercentWidth + 1 + kLedStateWidth + 1 +
                                       kPercentWidth + 1 + kBeepsWidth + 1;
constexpr std::size_t kLeastPattern = 10;
constexpr auto kIndent = "        ";
constexpr auto kSay = "say ";
constexpr auto kExpect = "expect ";

bool WantsColours(std::FILE* output) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
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

constexpr auto kAnyWidth = std::numeric_limits<std::size_t>::max();

// The terminal's width; elsewhere, and where it is not known, a line may be as long as it likes.
std::size_t LineWidth(std::FILE* output) {
  winsize size{};
  return ioctl(fileno(output), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kAnyWidth;
}

std::string OrDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

// "rg 1000 0 1000 0": what each lit channel plays, the same only once.
std::string Patterns(const SView& view) {
  std::vector<std::pair<std::string, std::string>> lit;  // channels, pattern
  for (std::size_t channel = 0; channel < view.patterns.size(); ++channel) {
    if (view.levels[channel] == 0) continue;
    const auto& pattern = view.patterns[channel];
    auto same = std::ranges::find(lit, pattern, &std::pair<std::string, std::string>::second);
    if (same == lit.end()) same = lit.insert(lit.end(), {"", pattern});
    same->first += "rgb"[channel];
  }
  std::string text;
  for (const auto& [channels, pattern] : lit) {
    text += fmt::format("{}{} {}", text.empty() ? "" : " | ", channels, OrDash(pattern));
  }
  return OrDash(text);
}

std::string Cells(const std::string& state, const std::string& swatch, const std::string& lamp,
                  const std::string& brightness, const std::string& ledState,
                  const std::string& display, const std::string& beeps,
                  const std::string& patterns) {
  return fmt::format("{} {} {} {:>{}} {} {:>{}} {:>{}} {}\n", Fit(state, kStateWidth), swatch,
                     Fit(lamp, kLampWidth), brightness, kPercentWidth,
                     Fit(ledState, kLedStateWidth), display, kPercentWidth, beeps, kBeepsWidth,
                     patterns);
}

std::string CutTo(std::size_t width, const std::string& text) {
  return text.size() <= width ? text : Fit(text, width);
}

// Steps that change nothing themselves.
bool OnlyLooks(const std::string& step) {
  return step.starts_with(kExpect) || step.starts_with("wait ") || step.starts_with("repeat ") ||
         step == "mark" || step == "end";
}

}  // namespace

CTranscript::CTranscript(std::FILE* output)
    : CTranscript(output,
                  {WantsColours(output), LineWidth(output) != kAnyWidth, LineWidth(output)}) {}

CTranscript::CTranscript(std::FILE* output, const SStyle& style)
    : mOutput(output),
      mStyle(style),
      mPatternWidth(style.width > kBeforePattern + kLeastPattern ? style.width - kBeforePattern
                                                                 : kLeastPattern) {}

void CTranscript::Header() {
  Line(fmt::format("{:>6} {} {}", "time", Fit("step", kStepWidth),
                   Cells("state", "    ", "lamp", "at", "LED state", "disp", "beeps", "pattern")));
}

void CTranscript::Step(const std::string& text, const SView& view) {
  if (text.starts_with(kSay)) {
    Line((mStyle.colours ? "\x1b[1m" : "") + text.substr(std::string_view(kSay).size()) +
         (mStyle.colours ? "\x1b[0m\n" : "\n"));
    return;
  }
  Row(text, view, text.starts_with(kExpect) ? ": yes" : "");
}

void CTranscript::FailedStep(const std::string& text, const SView& view) {
  Row(text, view, ": no");
}

void CTranscript::Row(const std::string& text, const SView& view, const std::string& verdict) {
  const auto time = fmt::format("{:.3f}", std::chrono::duration<double>(view.time).count());
  auto shown = Cells(OrDash(view.state), Swatch(view, mStyle.colours), LampWords(view.lamp),
                     view.brightness, OrDash(view.ledState), OrDash(view.display),
                     fmt::format("{}", view.beeps), CutTo(mPatternWidth, Patterns(view)));
  if (OnlyLooks(text) && shown == mShown) {
    Line(fmt::format("{:>6}   {}{}\n", time, text, verdict));
    return;
  }
  mShown = std::move(shown);
  Line(fmt::format("{:>6} {} {}", time, Fit(text, kStepWidth), mShown));
}

void CTranscript::Progress(const std::string& step, std::chrono::milliseconds time,
                           const std::string& text) {
  if (!mStyle.live) return;
  const auto line = CutTo(mStyle.width - 1, fmt::format("{:>6.1f}   {}{}{}",
                                                        std::chrono::duration<double>(time).count(),
                                                        step, text.empty() ? "" : "   ", text));
  if (line == mDrawn) return;
  Clear();
  mDrawn = line;
  std::fputs(line.c_str(), mOutput);
  std::fflush(mOutput);
}

void CTranscript::Clear() {
  if (mDrawn.empty()) return;
  mDrawn.clear();
  std::fputs("\r\x1b[K", mOutput);
  std::fflush(mOutput);
}

void CTranscript::Note(const std::string& text) {
  Line(fmt::format("{}({})\n", kIndent, text));
}

void CTranscript::Failure(const std::string& headline, const std::string& text) {
  Line(mStyle.colours ? fmt::format("\x1b[1;31m{}\x1b[0m\n", headline) : headline + '\n');
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) Line("  " + line + '\n');
}

void CTranscript::Line(const std::string& text) {
  Clear();
  std::fputs(text.c_str(), mOutput);
  std::fflush(mOutput);
}
