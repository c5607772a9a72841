// Runs a test's body in a child process that has entered the private namespace, so that the test
// runner's own mounts stay as they are.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "virtualcharger/hardware/privatenamespace.h"

// The child prints the body's failures and they fail the test here. Skips the test, with the
// reason, where the machine does not permit the namespace.
inline void RunInsideNamespace(const std::function<void()>& body) {
  int reason[2];
  ASSERT_EQ(pipe(reason), 0);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (const auto failure = EnterPrivateNamespace()) {
      const auto written = write(reason[1], failure->data(), failure->size());
      _exit(written < 0 ? 1 : 0);
    }
    body();
    // Not _exit: the sanitizers give their verdict on the way out. The body has joined its threads.
    std::exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  close(reason[1]);
  std::string text(1024, '\0');
  const auto size = read(reason[0], text.data(), text.size());
  close(reason[0]);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  if (!text.empty()) GTEST_SKIP() << "no virtual hardware here: " << text;
}
