#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <thread>

#include "virtualcharger/scenario/childprocess.h"
#include "virtualcharger/scenario/peerlink.h"

namespace {

constexpr auto kGenerous = std::chrono::seconds(20);

bool Eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kGenerous;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

std::vector<std::string> Shell(const std::string& script) {
  return {"/bin/sh", "-c", script};
}

std::string EndOf(const std::vector<std::string>& command) {
  CChildProcess child(command, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO});
  return Eventually([&] { return child.Ended().has_value(); }) ? DescribeEnd(*child.Ended())
                                                               : "still running";
}

TEST(AChildProcess, TellsHowItEnded) {
  EXPECT_EQ(EndOf(Shell("exit 3")), "exit status 3");
  EXPECT_EQ(EndOf(Shell("kill -9 $$")), "signal 9 (Killed)");
  EXPECT_EQ(EndOf({"/nowhere/to/be/found"}), "exit status 127");
}

TEST(AChildProcess, StandsStillWhileItIsFrozen) {
  CChildProcess child(Shell("exec sleep 1000"), {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO});
  child.Freeze();
  EXPECT_TRUE(child.IsFrozen());
  child.Signal(SIGTERM);
  EXPECT_FALSE(child.Ended());
  child.Thaw();
  EXPECT_FALSE(child.IsFrozen());
  EXPECT_TRUE(Eventually([&] { return child.Ended().has_value(); }));
}

TEST(AChildProcess, IsSeenToBeFrozenAndThawedBySomebodyElse) {
  CChildProcess child(Shell("kill -STOP $$; exec sleep 1000"),
                      {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO});
  EXPECT_TRUE(Eventually([&] { return !child.Ended() && child.IsFrozen(); }));
  child.Signal(SIGCONT);
  EXPECT_TRUE(Eventually([&] { return !child.Ended() && !child.IsFrozen(); }));
}

TEST(AChildProcess, InheritsNeitherDescriptorsNorBlockedSignals) {
  const int open = ::open("/dev/null", O_RDONLY);
  sigset_t signals;
  sigset_t before;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  EXPECT_EQ(EndOf(Shell("test -e /proc/self/fd/" + std::to_string(open) + " && exit 1; exit 0")),
            "exit status 0");
  EXPECT_EQ(EndOf(Shell("kill -TERM $$; exit 0")), "signal 15 (Terminated)");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  close(open);
}

TEST(APeerLink, UnderstandsWhatThePeerTells) {
  std::vector<std::string> events;
  auto link = std::make_unique<CPeerLink>(
      Shell(
          "echo serving; echo nonsense; echo subscribers 2; echo signal 111 Green/On; echo state 3;"
          "read number rest; echo reply $number got $rest; read end"),
      STDERR_FILENO, [&](const std::string& kind, std::int64_t number, const std::string& text) {
        events.push_back(kind + ' ' + std::to_string(number) + '=' + text);
      });
  const auto command = link->Send("connector 5");
  EXPECT_FALSE(command->outcome);
  ASSERT_TRUE(Eventually([&] {
    link->Look();
    return command->outcome.has_value();
  }));
  EXPECT_TRUE(link->IsServing());
  EXPECT_EQ(link->Subscribers(), 2U);
  EXPECT_THAT(events, testing::ElementsAre("signal 111=Green/On", "state 3="));
  EXPECT_EQ(command->outcome, "got connector 5");
  const auto last = link->Send("connector 6");
  link.reset();
  EXPECT_TRUE(last->lost);
}

TEST(APeerLink, KeepsWhatThePeerHasNoRoomFor) {
  CPeerLink link(Shell("read go; while read number rest; do echo reply $number $rest; done"),
                 STDERR_FILENO, [](const auto&...) {});
  const std::string command(1000, 'x');
  std::vector<std::shared_ptr<const SCommand>> commands;
  while (commands.size() < 1000) commands.push_back(link.Send(command));
  ASSERT_TRUE(Eventually([&] {
    link.Look();
    return commands.back()->outcome.has_value();
  }));
  commands.erase(commands.begin());  // it is the "go"
  for (const auto& each : commands) EXPECT_EQ(each->outcome, command);
}

}  // namespace
