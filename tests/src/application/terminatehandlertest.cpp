#include <gtest/gtest.h>

#include <csignal>
#include <exception>
#include <functional>
#include <iostream>

#include "src/terminatehandler.h"
#include "tests/support/logcapture.h"

namespace {

// In the process that dies: what it logged, on the stream that the test reads.
[[noreturn]] void Die(const std::function<void()>& how) noexcept {
  static const LogCapture log;
  std::set_terminate([] {
    try {
      HandleTerminate();
    } catch (...) {
    }
  });
  std::signal(SIGABRT, [](int) {
    for (const auto& line : log.Lines()) {
      std::cerr << line << '\n';
    }
  });
  how();
  std::terminate();
}

TEST(TheTerminateHandlerDeathTest, SaysSoWhereThereIsNothingToName) {
  EXPECT_DEATH(Die([] { throw 5; }),
               "5 Uncaught exception of unknown type.\n5 Aborting process.\n");
  EXPECT_DEATH(Die([] {}), "^5 Aborting process.\n");
}

}  // namespace
