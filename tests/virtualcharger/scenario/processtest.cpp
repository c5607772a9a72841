#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "platform/rpc/communicationconfig.h"
#include "virtualcharger/scenario/childprocess.h"
#include "virtualcharger/scenario/peerlink.h"
#include "virtualcharger/scenario/privateroot.h"

namespace {

using testing::HasSubstr;

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
    link->Read();
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

TEST(APrivateRoot, HoldsAStoreThatPutsTheSocketsIntoIt) {
  std::string path;
  {
    CPrivateRoot root;
    path = root.Path();
    EXPECT_EQ(Rpc::ReadCommunicationConfig(root.Store()).socketDirectory, path + "/run");
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(APrivateRoot, StaysWhereItIsToBeKept) {
  std::string path;
  {
    CPrivateRoot root;
    root.Keep();
    path = root.Path();
  }
  EXPECT_TRUE(std::filesystem::exists(path));
  std::filesystem::remove_all(path);
}

TEST(APrivateRoot, KeepsSocketPathsShortWhereTheUsersOwnFolderIsDeep) {
  const char* before = std::getenv("XDG_RUNTIME_DIR");
  const std::string kept = before == nullptr ? "" : before;
  const auto deep = std::filesystem::temp_directory_path() / std::string(90, 'd');
  std::filesystem::create_directories(deep);
  setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
  EXPECT_THAT(CPrivateRoot().Path(), testing::StartsWith("/tmp/charger-"));
  before == nullptr ? unsetenv("XDG_RUNTIME_DIR") : setenv("XDG_RUNTIME_DIR", kept.c_str(), 1);
  std::filesystem::remove(deep);
}

}  // namespace
