// Collects what the process logs instead of writing it, and restores the log as it goes.
//
// Threads: lines may come from any thread. A thread that logs is started after the capture was
// created and ended before it goes; a capture that is a fixture's first member gets that right.
#pragma once

#include <spdlog/logger.h>
#include <spdlog/sinks/sink.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/log/log.h"

class LogCapture {
 public:
  struct Line {
    Log::ELogLevel mLevel;
    std::string mText;

    bool operator==(const Line&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const Line& line) {
      return stream << static_cast<int>(line.mLevel) << " " << line.mText;
    }
  };

  // Collects the lines of this level and above.
  explicit LogCapture(Log::ELogLevel level = Log::ELogLevel::ETrace)
      : mPreviousLogger(
            std::exchange(Log::mSyslogSink, std::make_shared<spdlog::logger>("capture", mSink))),
        mPreviousLevel(Log::GetLogLevel()),
        mPreviousConsole(Log::mConsoleLoggingEnabled.exchange(false)) {
    Log::SetLogLevel(level);
  }

  ~LogCapture() {
    Log::mSyslogSink = mPreviousLogger;
    Log::EnableConsoleLogging(mPreviousConsole);
    Log::SetLogLevel(mPreviousLevel);
  }

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<Line> Lines() const {
    const std::lock_guard lock(mSink->mMutex);
    return mSink->mLines;
  }

  void Clear() {
    const std::lock_guard lock(mSink->mMutex);
    mSink->mLines.clear();
  }

  // How many lines of the level hold this text.
  size_t Count(Log::ELogLevel level, std::string_view part) const {
    const std::lock_guard lock(mSink->mMutex);
    return mSink->Count(level, part);
  }

  // Waits until so many lines of the level hold this text; false when they have not come within a
  // limit that only a fault reaches.
  bool WaitFor(Log::ELogLevel level, std::string_view part, size_t count = 1) const {
    std::unique_lock lock(mSink->mMutex);
    return mSink->mChanged.wait_for(lock, std::chrono::seconds(20),
                                    [&] { return mSink->Count(level, part) >= count; });
  }

 private:
  struct Sink : spdlog::sinks::sink {
    void log(const spdlog::details::log_msg& message) override {
      const std::lock_guard lock(mMutex);
      mLines.push_back({static_cast<Log::ELogLevel>(message.level),
                        std::string(message.payload.data(), message.payload.size())});
      mChanged.notify_all();
    }
    void flush() override {}
    void set_pattern(const std::string&) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

    size_t Count(Log::ELogLevel level, std::string_view part) const {
      return static_cast<size_t>(std::ranges::count_if(mLines, [&](const Line& line) {
        return line.mLevel == level && line.mText.find(part) != std::string::npos;
      }));
    }

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Line> mLines;
  };

  const std::shared_ptr<Sink> mSink = std::make_shared<Sink>();
  const std::shared_ptr<spdlog::logger> mPreviousLogger;
  const Log::ELogLevel mPreviousLevel;
  const bool mPreviousConsole;
};
