#include <fmt/ostream.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/ostream_sink.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "platform/log/log.h"
#include "tests/support/logcapture.h"

namespace {

using Log::ELogLevel;

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
  std::string lines = "trace t\ndebug d\ninfo i\nwarning w\nerror e\ncritical c\n";
  for (int level = 0; level <= static_cast<int>(ELogLevel::EOff); ++level) {
    Log::SetLogLevel(static_cast<ELogLevel>(level));
    EXPECT_EQ(Log::GetLogLevel(), static_cast<ELogLevel>(level));
    LOG(Trace, "t");
    LOG(Debug, "d");
    LOG(Info, "i");
    LOG(Warning, "w");
    LOG(Error, "e");
    LOG(Critical, "c");
    ExpectBoth(lines);
    lines.erase(0, lines.find('\n') + 1);
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

struct Lamp {
  int& mFormatted;

  friend std::ostream& operator<<(std::ostream& stream, const Lamp& lamp) {
    ++lamp.mFormatted;
    return stream << "lamp";
  }
};

TEST_F(TheLog, FormatsALineOnceForBothLoggersAndADroppedLineNever) {
  int evaluated = 0;
  int formatted = 0;
  LOG(Debug, "{}", ++evaluated);
  LOG(Info, "{}", fmt::streamed(Lamp{formatted}));
  ExpectBoth("info lamp\n");
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(formatted, 1);
}

TEST_F(TheLog, KeepsTheTextOfALineWhateverItsArgumentsAre) {
  LOG(Info, "[RPC] {}", "{} {0} %s");
  ExpectBoth("info [RPC] {} {0} %s\n");
  constexpr int kNoWidth = -1;
  LOG(Error, "Lamp {:{}} is off", 1, kNoWidth);
  ExpectBoth("error Lamp {:{}} is off\n");
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
              testing::MatchesRegex(time + "warning  main            from main\n" + time +
                                    "info     light sensor    from a thread with a name\n" + time +
                                    "info     [0-9]+ +from one without\n"));
}

TEST_F(TheLog, TakesLinesFromManyThreadsWhileItsSettingsChange) {
  constexpr size_t kLines = 500;
  const LogCapture capture(ELogLevel::EInfo);
  std::vector<std::jthread> writers;
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([] {
      for (size_t line = 0; line < kLines; ++line) {
        LOG(Error, "line {}", line);
        LOG(Debug, "now and then");
      }
    });
  }
  for (size_t change = 0; change < kLines; ++change) {
    Log::SetLogLevel(change % 2 == 0 ? ELogLevel::EDebug : ELogLevel::EError);
    Log::EnableConsoleLogging(change % 3 == 0);
  }
  writers.clear();
  EXPECT_EQ(capture.Count(ELogLevel::EError, "line"), 4 * kLines);
}

TEST(ALogLevel, HasTheNextMoreVerboseLevelDownToTrace) {
  EXPECT_EQ(Log::GetLowerLogLevel(ELogLevel::EOff), ELogLevel::ECritical);
  EXPECT_EQ(Log::GetLowerLogLevel(ELogLevel::EDebug), ELogLevel::ETrace);
  EXPECT_EQ(Log::GetLowerLogLevel(ELogLevel::ETrace), ELogLevel::ETrace);
}

TEST(AMangledName, IsMadeReadableWhereItCanBe) {
  EXPECT_EQ(Log::Demangle(typeid(std::out_of_range).name()), "std::out_of_range");
  EXPECT_EQ(Log::Demangle("not mangled"), "not mangled");
}

}  // namespace
