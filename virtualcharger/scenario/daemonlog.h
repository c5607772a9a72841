// What the daemon logs on its console, taken in line by line while it runs.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log/log.h"

struct SLogLine {
  std::chrono::steady_clock::time_point time;  // when it was taken in
  Log::ELogLevel level;
  std::string thread;
  std::string text;
};

// "trace" to "critical", as the daemon names them: each more serious than the one before.
const std::vector<std::string>& LogLevels();
const std::string& LogLevelName(Log::ELogLevel level);

// Nothing for what is no whole log line.
std::optional<SLogLine> ParseLogLine(std::string_view line);

// Threads: one.
class CDaemonLog {
 public:
  explicit CDaemonLog(std::string path) : mPath(std::move(path)) {}

  // Takes in what has come since the last time; shown: on the standard output too, as it is.
  void Read(bool shown);

  // The lines that were taken in, the newest 10 000 of them, and what is left after the calls
  // below.
  const std::deque<SLogLine>& Lines() const { return mLines; }
  void Forget(std::size_t line) {
    mLines.erase(mLines.begin() + static_cast<std::ptrdiff_t>(line));
  }
  void ForgetAll() { mLines.clear(); }

 private:
  void Add(std::string_view line);

  const std::string mPath;
  std::ifstream mFile;
  std::string mBegun;  // a line without its end
  std::deque<SLogLine> mLines;
};
