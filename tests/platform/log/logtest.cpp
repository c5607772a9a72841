#include <gmock/gmock.h>
#include <pthread.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/ostream_sink.h>

#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "platform/log/log.h"
#include "tests/support/logcapture.h"

namespace {

// Counts how often it is formatted; fails at it where it was told to.
struct Lamp {
  int& mFormatted;
  bool mFails = false;
};

}  // namespace

template <>
struct fmt::formatter<Lamp> {
  constexpr auto parse(format_parse_context& context) { return context.begin(); }
  auto format(const Lamp& lamp, format_context& context) const {
    ++lamp.mFormatted;
    if (lamp.mFails) {
      throw std::runtime_error("no lamp");
    }
    return format_to(context.out(), "lamp");
  }
};

namespace {

using Log::ELogLevel;
using testing::MatchesRegex;

// Both loggers as Init makes them, writing into strings.
class TheLog : public testing::Test {
 protected:
  TheLog() {
    Log::Init("logtest", ELogLevel::EInfo);
    Redirect(*Log::mSyslogSink, mSystemLog);
    Redirect(*Log::mConsoleSink, mConsole);
  }

  ~TheLog() override {
    Log::mSyslogSink.reset();
    Log::mConsoleSink.reset();
    Log::SetLogLevel(ELogLevel::EOff);
  }

  static void Redirect(spdlog::logger& logger, std::ostream& stream) {
    logger.sinks() = {std::make_shared<spdlog::sinks::ostream_sink_mt>(stream)};
    logger.set_pattern("%l %v");
  }

  void ExpectBoth(const std::string& lines) {
    EXPECT_EQ(mSystemLog.str(), lines);
    EXPECT_EQ(mConsole.str(), lines);
    mSystemLog.str("");
    mConsole.str("");
  }

  std::ostringstream mSystemLog;
  std::ostringstream mConsole;
};

TEST_F(TheLog, DropsALineBelowItsLevelInBothLoggers) {
  const std::string lines[] = {"trace t\n",   "debug d\n", "info i\n",
                               "warning w\n", "error e\n", "critical c\n"};
  for (int level = 0; level <= static_cast<int>(ELogLevel::EOff); ++level) {
    Log::SetLogLevel(static_cast<ELogLevel>(level));
    EXPECT_EQ(Log::GetLogLevel(), static_cast<ELogLevel>(level));
    LOG(Trace, "t");
    LOG(Debug, "d");
    LOG(Info, "i");
    LOG(Warning, "w");
    LOG(Error, "e");
    LOG(Critical, "c");
    std::string expected;
    for (size_t line = static_cast<size_t>(level); line < std::size(lines); ++line) {
      expected += lines[line];
    }
    ExpectBoth(expected);
  }
}

TEST_F(TheLog, WritesToTheConsoleOnlyWhileThatIsEnabled) {
  LOG(Info, "{} {}", "with", 1);
  Log::EnableConsoleLogging(false);
  LOG(Info, "without");
  Log::EnableConsoleLogging(true);
  EXPECT_EQ(mConsole.str(), "info with 1\n");
  EXPECT_EQ(mSystemLog.str(), "info with 1\ninfo without\n");
}

TEST_F(TheLog, FormatsALineOnceForBothLoggersAndADroppedLineNever) {
  int evaluated = 0;
  int formatted = 0;
  const auto lamp = [&] {
    ++evaluated;
    return Lamp{formatted};
  };
  LOG(Debug, "{}", lamp());
  EXPECT_EQ(evaluated, 0);
  LOG(Info, "{}", lamp());
  ExpectBoth("info lamp\n");
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(formatted, 1);
}

TEST_F(TheLog, TakesBracesInAnArgumentAsText) {
  LOG(Info, "[RPC] {}", "{} {0} %s");
  ExpectBoth("info [RPC] {} {0} %s\n");
}

TEST_F(TheLog, KeepsTheTextOfALineWhoseArgumentCannotBeFormatted) {
  int formatted = 0;
  const Lamp broken{formatted, true};
  LOG(Error, "Lamp {} is off", broken);
  ExpectBoth("error Lamp {} is off\n");
}

TEST_F(TheLog, SurvivesALoggerThatFails) {
  struct FailingSink : spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg&) override { throw std::runtime_error("full"); }
    void flush_() override {}
  };
  Log::mSyslogSink->sinks() = {std::make_shared<FailingSink>()};
  std::string reported;
  Log::mSyslogSink->set_error_handler([&](const std::string& error) { reported = error; });
  LOG(Info, "still there");
  EXPECT_EQ(reported, "full");
  EXPECT_EQ(mConsole.str(), "info still there\n");
}

TEST_F(TheLog, DropsLinesWhileThereAreNoLoggers) {
  Log::mSyslogSink.reset();
  Log::mConsoleSink.reset();
  Log::SetLogLevel(ELogLevel::ETrace);
  LOG(Critical, "too early");
  ExpectBoth("");
}

TEST_F(TheLog, WritesConsoleLinesForPeople) {
  testing::internal::CaptureStdout();
  Log::Init("logtest", ELogLevel::EInfo);
  LOG(Warning, "from main");
  std::thread([] {
    pthread_setname_np(pthread_self(), "light sensor");
    LOG(Info, "from a thread with a name");
  }).join();
  std::thread([] { LOG(Info, "from one without"); }).join();
  const std::string time = "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9] ";
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              MatchesRegex(time + "warning  main            from main\n" + time +
                           "info     light sensor    from a thread with a name\n" + time +
                           "info     [0-9]+ +from one without\n"));
}

TEST_F(TheLog, TakesLinesFromManyThreadsWhileItsSettingsChange) {
  constexpr int kWriters = 4;
  constexpr int kLines = 500;
  LogCapture capture(ELogLevel::EInfo);
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([writer] {
      for (int line = 0; line < kLines; ++line) {
        LOG(Error, "writer {} line {}.", writer, line);
        LOG(Debug, "now and then");
      }
    });
  }
  for (int change = 0; change < kLines; ++change) {
    Log::SetLogLevel(change % 2 == 0 ? ELogLevel::EDebug : ELogLevel::EError);
    Log::EnableConsoleLogging(change % 3 == 0);
  }
  for (auto& writer : writers) {
    writer.join();
  }
  for (int writer = 0; writer < kWriters; ++writer) {
    EXPECT_EQ(capture.Count(ELogLevel::EError, fmt::format("writer {} line", writer)),
              static_cast<size_t>(kLines));
  }
}

TEST(ALogLevel, HasTheNextMoreVerboseLevelDownToTrace) {
  const std::pair<ELogLevel, ELogLevel> cases[] = {{ELogLevel::EOff, ELogLevel::ECritical},
                                                   {ELogLevel::EInfo, ELogLevel::EDebug},
                                                   {ELogLevel::EDebug, ELogLevel::ETrace},
                                                   {ELogLevel::ETrace, ELogLevel::ETrace}};
  for (const auto& [level, lower] : cases) {
    EXPECT_EQ(Log::GetLowerLogLevel(level), lower);
  }
}

TEST(AMangledName, IsMadeReadableWhereItCanBe) {
  EXPECT_EQ(Log::Demangle(typeid(std::vector<int*>).name()),
            "std::vector<int*, std::allocator<int*> >");
  EXPECT_EQ(Log::Demangle(typeid(std::out_of_range).name()), "std::out_of_range");
  EXPECT_EQ(Log::Demangle("not mangled"), "not mangled");
  EXPECT_EQ(Log::Demangle(""), "");
}

TEST_F(TheLog, IsAsItWasAfterACapture) {
  {
    const LogCapture capture(ELogLevel::EDebug);
    LOG(Debug, "captured");
    LOG(Trace, "dropped");
    EXPECT_EQ(capture.Lines(), (std::vector<LogCapture::Line>{{ELogLevel::EDebug, "captured"}}));
  }
  ExpectBoth("");
  LOG(Debug, "dropped");
  LOG(Info, "written");
  ExpectBoth("info written\n");
}

}  // namespace
