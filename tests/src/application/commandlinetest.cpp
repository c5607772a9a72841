// What the options do; the usage text is tested on the program itself.
#include <getopt.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/log/log.h"
#include "src/commandline.h"

namespace {

struct Outcome {
  std::string root = "/";
  Log::ELogLevel level = Log::ELogLevel::EInfo;
  bool console = true;
  bool operator==(const Outcome&) const = default;
};

Outcome Parse(std::vector<std::string> words) {
  Log::Init("test", Log::ELogLevel::EInfo);
  std::vector<char*> arguments;
  for (auto& word : words) {
    arguments.push_back(word.data());
  }
  optind = 0;  // getopt begins anew
  const auto commandLine = ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
  return {commandLine ? commandLine->root : "stopped", Log::GetLogLevel(),
          Log::mConsoleLoggingEnabled};
}

TEST(TheCommandLine, TakesItsOptionsOneAtATime) {
  using enum Log::ELogLevel;
  const struct {
    std::vector<std::string> words;
    Outcome expected;
  } cases[] = {
      {{"feedback"}, {}},
      {{"feedback", "-v"}, {"/", EDebug}},
      {{"feedback", "-v", "--verbose"}, {"/", ETrace}},
      {{"feedback", "-vvv"}, {"/", ETrace}},
      {{"feedback", "-q"}, {"/", EInfo, false}},
      {{"feedback", "-r", "/data"}, {"/data"}},
      {{"feedback", "--root=/data/", "ignored"}, {"/data/"}},
      {{"feedback", "-v", "-h", "-q"}, {"stopped", EDebug, true}},
      {{"feedback", "-r"}, {"stopped"}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Parse(each.words), each.expected) << testing::PrintToString(each.words);
  }
  Log::mSyslogSink = nullptr;
  Log::mConsoleSink = nullptr;
}

}  // namespace
