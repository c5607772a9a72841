#include "platform/log/log.h"

#include <cxxabi.h>
#include <fmt/format.h>
#include <poll.h>
#include <pthread.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/sinks/syslog_sink.h>
#include <spdlog/spdlog.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <utility>

namespace Log {

std::shared_ptr<spdlog::logger> mSyslogSink;
std::shared_ptr<spdlog::logger> mConsoleSink;
std::atomic<bool> mConsoleLoggingEnabled{true};

namespace {

constexpr const char* kConsolePattern = "%H:%M:%S.%e %^%-8l%$ %-15* %v";

// A slow serial line takes a burst of lines in less.
constexpr int kConsolePatience = 200;  // ms

// The calling thread's name. Threads that were given none inherit the process's; their number says
// more.
class CThreadNameFlag : public spdlog::custom_flag_formatter {
 public:
  void format(const spdlog::details::log_msg& message, const std::tm& /*time*/,
              spdlog::memory_buf_t& target) override {
    std::array<char, 16> buffer{};
    pthread_getname_np(pthread_self(), buffer.data(), buffer.size());
    std::string name(buffer.data());
    if (message.thread_id == static_cast<size_t>(getpid())) {
      name = "main";
    } else if (name.empty() ||
               name == std::string_view(program_invocation_short_name).substr(0, 15)) {
      name = std::to_string(message.thread_id);
    }
    name.resize(std::max(name.size(), padinfo_.width_), ' ');
    target.append(name.data(), name.data() + name.size());
  }

  std::unique_ptr<custom_flag_formatter> clone() const override {
    return std::make_unique<CThreadNameFlag>();
  }
};

// Whoever holds the console up, with a full pipe or Ctrl-S, must not hold up the process.
class CConsoleSink : public spdlog::sinks::stdout_color_sink_mt {
 public:
  void log(const spdlog::details::log_msg& message) override {
    const std::lock_guard lock(mMutex);
    pollfd console{STDOUT_FILENO, POLLOUT, 0};
    mStandsStill = poll(&console, 1, mStandsStill ? 0 : kConsolePatience) == 0;
    if (!mStandsStill) {
      spdlog::sinks::stdout_color_sink_mt::log(message);
    }
  }

 private:
  std::mutex mMutex;
  bool mStandsStill = false;  // guarded by mMutex
};

std::shared_ptr<spdlog::logger> CreateConsoleLogger(const std::string& name) {
  auto formatter = std::make_unique<spdlog::pattern_formatter>();
  formatter->add_flag<CThreadNameFlag>('*').set_pattern(kConsolePattern);
  auto sink = std::make_shared<CConsoleSink>();
  sink->set_formatter(std::move(formatter));
  return std::make_shared<spdlog::logger>(name, std::move(sink));
}

}  // namespace

namespace Detail {

std::atomic<int> mThreshold{static_cast<int>(ELogLevel::EOff)};

void Write(ELogLevel level, fmt::string_view format, fmt::format_args arguments) noexcept {
  try {
    fmt::memory_buffer buffer;
    try {
      fmt::vformat_to(fmt::appender(buffer), format, arguments);
    } catch (const std::exception&) {
      // An argument that cannot be formatted must not cost the rest of the line.
      buffer.clear();
      buffer.append(format.data(), format.data() + format.size());
    }
    const spdlog::string_view_t line(buffer.data(), buffer.size());
    const auto spdlogLevel = static_cast<spdlog::level::level_enum>(level);
    if (mSyslogSink) {
      mSyslogSink->log(spdlogLevel, line);
    }
    if (mConsoleSink && mConsoleLoggingEnabled.load(std::memory_order_relaxed)) {
      mConsoleSink->log(spdlogLevel, line);
    }
  } catch (...) {
    // There is nowhere left to report to.
  }
}

}  // namespace Detail

void Init(const std::string& name, ELogLevel level) {
  // The line goes to the system log bare: syslog adds time, process and level itself.
  mSyslogSink = std::make_shared<spdlog::logger>(
      name, std::make_shared<spdlog::sinks::syslog_sink_mt>(name, LOG_PID, LOG_DAEMON, false));
  mConsoleSink = CreateConsoleLogger(name);
  EnableConsoleLogging(true);
  SetLogLevel(level);
}

void SetLogLevel(ELogLevel level) {
  const auto spdlogLevel = static_cast<spdlog::level::level_enum>(level);
  for (const auto& logger : {mSyslogSink, mConsoleSink}) {
    if (logger) {
      logger->set_level(spdlogLevel);
    }
  }
  Detail::mThreshold.store(static_cast<int>(level), std::memory_order_relaxed);
}

ELogLevel GetLogLevel() {
  return static_cast<ELogLevel>(Detail::mThreshold.load(std::memory_order_relaxed));
}

ELogLevel GetLowerLogLevel(ELogLevel level) {
  return level == ELogLevel::ETrace ? level : static_cast<ELogLevel>(static_cast<int>(level) - 1);
}

void EnableConsoleLogging(bool enable) {
  mConsoleLoggingEnabled.store(enable, std::memory_order_relaxed);
}

std::string Demangle(const char* mangledName) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(mangledName, nullptr, nullptr, &status), &std::free);
  return name ? name.get() : mangledName;
}

}  // namespace Log
