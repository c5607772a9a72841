// What the daemon logs on its console, taken in line by line while it runs.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log/log.h"
#include "platform/os/descriptor.h"

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
  static constexpr std::uint64_t kKept = 4ULL * 1024 * 1024;  // bytes

  explicit CDaemonLog(std::string path) : mPath(std::move(path)) {}

  // Takes in what has come since the last time, of a line at most 64 KiB; shown: on the standard
  // output too, as it is.
  void Read(bool shown);

  // Gives the file's space back to the disk, but for some MB that were taken in last; its size
  // stays, so that the daemon writes on undisturbed. Does nothing where the file system cannot.
  void GiveBack();

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
  CDescriptor mSpace;        // of the same file
  std::uint64_t mTaken = 0;  // bytes
  std::uint64_t mGivenBack = 0;
  std::string mBegun;  // a line without its end
  std::deque<SLogLine> mLines;
};
