// The process log: two loggers behind one level check.
//
// Every line goes to the system log and, while console logging is on, to the console. A line that
// no logger wants costs one relaxed load and a branch; its arguments are not even evaluated. A line
// that is wanted is formatted once and handed to both. A console that takes nothing for 200 ms
// loses lines until it takes some again.
//
// Threads: everything here may be called from any thread, except Init, which is called once and
// first. Nothing here throws: a failure to format or to write stays inside the log.
#pragma once

#include <fmt/core.h>

#include <atomic>
#include <memory>
#include <string>

namespace spdlog {
class logger;
}

namespace Log {

// Numbered as spdlog numbers them; a lower level is more verbose.
enum class ELogLevel : int { ETrace = 0, EDebug, EInfo, EWarning, EError, ECritical, EOff };

// The two loggers. Empty until Init; a line written before that is dropped.
extern std::shared_ptr<spdlog::logger> mSyslogSink;
extern std::shared_ptr<spdlog::logger> mConsoleSink;

// Read without a lock on each message.
extern std::atomic<bool> mConsoleLoggingEnabled;

// Creates both loggers under the process's name, at the given level, with console logging on.
void Init(const std::string& name, ELogLevel level);

// Sets the level of both loggers.
void SetLogLevel(ELogLevel level);
ELogLevel GetLogLevel();

// The next more verbose level; ETrace stays ETrace.
ELogLevel GetLowerLogLevel(ELogLevel level);

// Switches the console logger; the system log always gets every line.
void EnableConsoleLogging(bool enable);

// The readable form of a mangled type name; the name itself where it cannot be read.
std::string Demangle(const char* mangledName);

namespace Detail {
extern std::atomic<int> mThreshold;
void Write(ELogLevel level, fmt::string_view format, fmt::format_args arguments) noexcept;
}  // namespace Detail

inline bool IsEnabled(ELogLevel level) {
  return static_cast<int>(level) >= Detail::mThreshold.load(std::memory_order_relaxed);
}

// Formats once and hands the line to the loggers. Callers use LOG, which looks at the level first.
template <typename... Arguments>
void Write(ELogLevel level, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  Detail::Write(level, format, fmt::make_format_args(arguments...));
}

}  // namespace Log

// LOG(Debug, "text with {}", value): a macro, so that a dropped line evaluates no argument.
#define LOG(level, ...)                                      \
  do {                                                       \
    if (::Log::IsEnabled(::Log::ELogLevel::E##level)) {      \
      ::Log::Write(::Log::ELogLevel::E##level, __VA_ARGS__); \
    }                                                        \
  } while (false)
