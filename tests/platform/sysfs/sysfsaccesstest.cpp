#include <fcntl.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

#include "platform/sysfs/pathsysfsaccess.h"
#include "platform/sysfs/sysfsaccess.h"
#include "tests/support/logcapture.h"

namespace {

using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;

// The limit of a wait that is expected to succeed: only a fault reaches it.
constexpr auto kGenerous = 20s;

size_t OpenDescriptors() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
}

// File permissions bind everyone but root; the raw system call changes this one thread only.
void AsOrdinaryUser(const std::function<void()>& action) {
  std::thread([&] {
    if (geteuid() == 0) {
      ASSERT_EQ(syscall(SYS_setresuid, 65534, 65534, 65534), 0);
    }
    action();
  }).join();
}

class ASysfsAccess : public testing::Test {
 protected:
  void SetUp() override {
    std::string path = testing::TempDir() + "sysfsXXXXXX";
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    chmod(path.c_str(), 0755);
    mDirectory = path;
    mDescriptors = OpenDescriptors();
  }

  void TearDown() override {
    EXPECT_EQ(OpenDescriptors(), mDescriptors);
    std::filesystem::remove_all(mDirectory);
  }

  std::string Path(const std::string& name) const { return mDirectory + "/" + name; }

  std::string Create(const std::string& name, const std::string& content, mode_t mode = 0644) {
    std::ofstream(Path(name)) << content;
    chmod(Path(name).c_str(), mode);
    return Path(name);
  }

  std::string Content(const std::string& name) const {
    std::ifstream file(Path(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void ExpectFailureLogged(const std::string& path, const std::string& reason) {
    const auto lines = mLog.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].mLevel, Log::ELogLevel::EDebug);
    EXPECT_THAT(lines[0].mText, HasSubstr(path + ": "));
    EXPECT_THAT(lines[0].mText, EndsWith(reason));
    mLog.Clear();
  }

  LogCapture mLog;
  CSysfsAccess mAccess;
  std::string mDirectory;
  size_t mDescriptors = 0;
};

TEST_F(ASysfsAccess, ReplacesTheValueByWhatItWrites) {
  const std::string path = Create("trigger", "heartbeat");
  for (const std::string text : {"pattern", "0 255 1000 0", "", "with a line end\n"}) {
    EXPECT_TRUE(mAccess.Write(path, text));
    EXPECT_EQ(Content("trigger"), text);
  }
  EXPECT_TRUE(mLog.Lines().empty());
}

TEST_F(ASysfsAccess, ReadsAValueWithoutTheKernelsLineEnd) {
  const std::string page(4096, 'x');
  const struct {
    std::string mContent;
    std::string mValue;
  } cases[] = {
      {"104.000000\n", "104.000000"},
      {"no line end", "no line end"},
      {"", ""},
      {"\n", ""},
      {"only one\n\n", "only one\n"},
      {"one\ntwo\n", "one\ntwo"},
      {page, page},
      {page + "more", page},
      {{"a\0b\n", 4}, {"a\0b", 3}},
  };
  for (const auto& [content, value] : cases) {
    std::string text = "before";
    EXPECT_TRUE(mAccess.Read(Create("value", content), text));
    EXPECT_EQ(text, value);
  }
}

TEST_F(ASysfsAccess, ReportsEachWayInWhichAWriteFails) {
  const struct {
    std::string mPath;
    const char* mReason;
  } cases[] = {
      {Path("missing/trigger"), "No such file or directory"},
      {Create("file", "") + "/trigger", "Not a directory"},
      {mDirectory, "Is a directory"},
      {Create("readonly", "", 0444), "Permission denied"},
      {"/dev/full", "No space left on device"},
  };
  AsOrdinaryUser([&] {
    for (const auto& [path, reason] : cases) {
      EXPECT_FALSE(mAccess.Write(path, "1"));
      ExpectFailureLogged(path, reason);
    }
  });
}

TEST_F(ASysfsAccess, ReportsEachWayInWhichAReadFailsAndLeavesTheTextAlone) {
  const struct {
    std::string mPath;
    const char* mReason;
  } cases[] = {
      {Path("missing"), "No such file or directory"},
      {Create("file", "") + "/value", "Not a directory"},
      {mDirectory, "Is a directory"},
      {Create("secret", "7", 0200), "Permission denied"},
  };
  AsOrdinaryUser([&] {
    for (const auto& [path, reason] : cases) {
      std::string text = "before";
      EXPECT_FALSE(mAccess.Read(path, text));
      EXPECT_EQ(text, "before");
      ExpectFailureLogged(path, reason);
    }
  });
}

TEST_F(ASysfsAccess, TakesAShortWriteForAFailure) {
  const std::string path = Create("pattern", "");
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit twoBytes{2, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &twoBytes), 0);
  const bool written = mAccess.Write(path, "12345");
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_FALSE(written);
  ExpectFailureLogged(path, "only 2 of 5 bytes were taken");
}

std::atomic<int> sSignalsTaken{0};

TEST_F(ASysfsAccess, GoesOnWhenASignalInterruptsIt) {
  const std::string path = Path("slow");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++sSignalsTaken; };
  sigaction(SIGUSR1, &action, &before);

  // The open of a pipe that nobody writes to blocks until a signal comes, or a writer.
  std::atomic<bool> started{false};
  bool read = false;
  std::string text;
  std::thread reader([&] {
    started = true;
    read = mAccess.Read(path, text);
  });
  while (!started) {
    std::this_thread::yield();
  }
  for (int sent = 1; sent <= 200; ++sent) {
    pthread_kill(reader.native_handle(), SIGUSR1);
    while (sSignalsTaken < sent) {
      std::this_thread::yield();
    }
  }
  const int writer = open(path.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_EQ(write(writer, "42\n", 3), 3);
  reader.join();
  close(writer);
  sigaction(SIGUSR1, &before, nullptr);
  EXPECT_TRUE(read);
  EXPECT_EQ(text, "42");
}

TEST_F(ASysfsAccess, WaitsNoLongerThanItsLimitForAccess) {
  const std::string present = Create("present", "", 0666);
  const std::string readOnly = Create("readonly", "", 0444);
  const std::string writeOnly = Create("writeonly", "", 0222);
  const std::string missing = Path("missing");
  AsOrdinaryUser([&] {
    for (const auto limit : {0ms, 25ms}) {
      for (const auto& path : {readOnly, writeOnly}) {
        EXPECT_FALSE(mAccess.WaitForAccess(path, limit));
        ExpectFailureLogged(path, "Permission denied");
      }
      const auto begin = std::chrono::steady_clock::now();
      EXPECT_FALSE(mAccess.WaitForAccess(missing, limit));
      EXPECT_GE(std::chrono::steady_clock::now() - begin, limit);
      ExpectFailureLogged(missing, "No such file or directory");
    }
  });
  EXPECT_TRUE(mAccess.WaitForAccess(present, 0ms));
  EXPECT_TRUE(mLog.Lines().empty());
}

TEST_F(ASysfsAccess, SeesAnAttributeThatAppearsAndGetsItsPermissionsWhileItWaits) {
  std::atomic<bool> waiting{false};
  std::thread driver([&] {
    while (!waiting) {
      std::this_thread::yield();
    }
    Create("pattern", "", 0400);
    chmod(Path("pattern").c_str(), 0666);
  });
  AsOrdinaryUser([&] {
    waiting = true;
    EXPECT_TRUE(mAccess.WaitForAccess(Path("pattern"), kGenerous));
  });
  driver.join();
}

TEST_F(ASysfsAccess, FindsAttributesByNameInADirectory) {
  for (const std::string& directory : {mDirectory, mDirectory + "/"}) {
    CPathSysfsAccess byName(directory);
    CSysfsAccess& access = byName;
    std::string text;
    EXPECT_FALSE(access.Read("volume", text));
    Create("volume", "3\n");
    EXPECT_TRUE(access.WaitForAccess("volume", 0ms));
    EXPECT_TRUE(access.Read("volume", text));
    EXPECT_EQ(text, "3");
    EXPECT_TRUE(access.Write("volume", "5"));
    EXPECT_EQ(Content("volume"), "5");
    std::filesystem::remove(Path("volume"));
  }
}

}  // namespace
