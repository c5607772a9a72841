#include "virtualcharger/scenario/daemonlog.h"

#include <fcntl.h>

#include <algorithm>
#include <iostream>

namespace {

constexpr std::size_t kMostLines = 10'000;
constexpr std::size_t kLongestText = 64UL * 1024;

void Append(std::string& text, std::string_view more) {
  text += more.substr(0, kLongestText - std::min(text.size(), kLongestText));
}

// Takes the text up to the next blank, and the blanks behind it.
std::string_view NextWord(std::string_view& rest) {
  const auto word = rest.substr(0, rest.find(' '));
  rest.remove_prefix(word.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return word;
}

bool IsTime(std::string_view word) {
  constexpr std::string_view form = "00:00:00.000";
  return std::ranges::equal(word, form, [](char letter, char place) {
    return place == '0' ? letter >= '0' && letter <= '9' : letter == place;
  });
}

}  // namespace

const std::vector<std::string>& LogLevels() {
  static const std::vector<std::string> names{"trace",   "debug", "info",
                                              "warning", "error", "critical"};
  return names;
}

const std::string& LogLevelName(Log::ELogLevel level) {
  return LogLevels().at(static_cast<std::size_t>(level));
}

std::optional<SLogLine> ParseLogLine(std::string_view line) {
  if (!IsTime(NextWord(line))) return std::nullopt;
  const auto level = std::ranges::find(LogLevels(), NextWord(line));
  if (level == LogLevels().end()) return std::nullopt;
  SLogLine parsed{std::chrono::steady_clock::now(),
                  static_cast<Log::ELogLevel>(level - LogLevels().begin()), "", ""};
  parsed.thread = NextWord(line);
  parsed.text = line;
  return parsed;
}

void CDaemonLog::Read(bool shown) {
  if (!mFile.is_open()) {
    mFile.open(mPath);
    mSpace = CDescriptor(open(mPath.c_str(), O_WRONLY | O_CLOEXEC));
  }
  mFile.clear();
  for (std::string part; std::getline(mFile, part);) {
    if (shown) std::cout << part << (mFile.eof() ? "" : "\n") << std::flush;
    Append(mBegun, part);
    mTaken += part.size() + (mFile.eof() ? 0 : 1);
    if (mFile.eof()) return;
    Add(mBegun);
    mBegun.clear();
  }
}

void CDaemonLog::GiveBack() {
  if (mTaken < mGivenBack + 2 * kKept) return;
  mGivenBack = mTaken - kKept;
  fallocate(mSpace.Get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0,
            static_cast<off_t>(mGivenBack));
}

void CDaemonLog::Add(std::string_view line) {
  if (auto parsed = ParseLogLine(line)) {
    mLines.push_back(std::move(*parsed));
    if (mLines.size() > kMostLines) mLines.pop_front();
  } else if (!mLines.empty()) {
    // The text of one line can go on over several.
    Append(mLines.back().text, "\n");
    Append(mLines.back().text, line);
  }
}
