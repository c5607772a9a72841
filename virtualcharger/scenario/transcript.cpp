#include "virtualcharger/scenario/transcript.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "virtualcharger/hardware/swatch.h"

namespace {

// Together 118 columns.
constexpr std::size_t kStepWidth = 32;
constexpr std::size_t kLampWidth = 16;
constexpr std::size_t kPatternWidth = 13;
constexpr auto kIndent = "        ";
constexpr auto kSay = "say ";

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

std::string Row(const std::string& time, const std::string& step, const std::string& swatch,
                const std::string& lamp, const std::string& ledState, const std::string& red,
                const std::string& green, const std::string& blue) {
  return fmt::format("{:>6} {} {} {} {} {}|{}|{}\n", time, Fit(step, kStepWidth), swatch,
                     Fit(lamp, kLampWidth), Fit(ledState, kLampWidth), Fit(red, kPatternWidth),
                     Fit(green, kPatternWidth),
                     blue.size() > kPatternWidth ? Fit(blue, kPatternWidth) : blue);
}

std::string OrDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

}  // namespace

CTranscript::CTranscript(std::FILE* output) : CTranscript(output, WantsColours(output)) {}

void CTranscript::Header() {
  Line(Row("time", "step", "    ", "lamp", "LED state", "red", "green", "blue"));
}

void CTranscript::Step(const std::string& text, const SView& view) {
  if (text.starts_with(kSay)) {
    Line((mColours ? "\x1b[1m" : "") + text.substr(std::string_view(kSay).size()) +
         (mColours ? "\x1b[0m\n" : "\n"));
    return;
  }
  const auto seconds = std::chrono::duration<double>(view.time).count();
  Line(Row(fmt::format("{:.3f}", seconds), text, Swatch(view, mColours), LampWords(view.lamp),
           OrDash(view.ledState), OrDash(view.patterns[0]), OrDash(view.patterns[1]),
           OrDash(view.patterns[2])));
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
