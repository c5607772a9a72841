#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <iterator>
#include <thread>

#include "platform/sysfs/pathsysfsaccess.h"
#include "tests/support/logcapture.h"
#include "tests/support/temporarydirectory.h"

namespace {

using namespace std::chrono_literals;

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
  ASysfsAccess() { chmod(mDirectory.Path().c_str(), 0755); }
  ~ASysfsAccess() override { EXPECT_EQ(OpenDescriptors(), mDescriptors); }

  std::string Path(const std::string& name) const { return mDirectory.Path() / name; }

  std::string Create(const std::string& name, const std::string& content, mode_t mode = 0644) {
    const auto path = mDirectory.WriteFile(name, content);
    chmod(path.c_str(), mode);
    return path;
  }

  void ExpectFailure(bool succeeded, const std::string& path, const std::string& reason) {
    EXPECT_FALSE(succeeded);
    const auto lines = mLog.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].mLevel, Log::ELogLevel::EDebug);
    EXPECT_THAT(lines[0].mText, testing::EndsWith(" " + path + ": " + reason));
    mLog.Clear();
  }

  LogCapture mLog;
  CSysfsAccess mAccess;
  const TemporaryDirectory mDirectory;
  const size_t mDescriptors = OpenDescriptors();
};

TEST_F(ASysfsAccess, ReplacesTheValueByWhatItWrites) {
  const std::string path = Create("trigger", "heartbeat");
  for (const std::string text : {"pattern", "0 255 1000 0", "", "with a line end\n"}) {
    EXPECT_TRUE(mAccess.Write(path, text));
    EXPECT_EQ(mDirectory.ReadFile("trigger"), text);
  }
  EXPECT_TRUE(mLog.Lines().empty());
}

TEST_F(ASysfsAccess, ReadsAValueWithoutTheKernelsLineEnd) {
  const std::string page(4096, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"104.000000\n", "104.000000"}, {"no line end", "no line end"}, {"", ""},
      {"one\ntwo\n\n", "one\ntwo\n"}, {page + "more", page},          {{"a\0b\n", 4}, {"a\0b", 3}},
  };
  for (const auto& [content, value] : cases) {
    std::string text = "before";
    EXPECT_TRUE(mAccess.Read(Create("value", content), text));
    EXPECT_EQ(text, value);
  }
}

TEST_F(ASysfsAccess, ReportsEachWayInWhichAnAccessFailsAndLeavesTheTextAlone) {
  const std::pair<std::string, const char*> cases[] = {
      {Path("missing/trigger"), "No such file or directory"},
      {Create("file", "") + "/trigger", "Not a directory"},
      {mDirectory.Path(), "Is a directory"},
      {Create("secret", "7", 0), "Permission denied"},
  };
  AsOrdinaryUser([&] {
    for (const auto& [path, reason] : cases) {
      ExpectFailure(mAccess.Write(path, "1"), path, reason);
      std::string text = "before";
      ExpectFailure(mAccess.Read(path, text), path, reason);
      EXPECT_EQ(text, "before");
    }
    ExpectFailure(mAccess.Write("/dev/full", "1"), "/dev/full", "No space left on device");
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
  ExpectFailure(written, path, "only 2 of 5 bytes were taken");
}

TEST_F(ASysfsAccess, WaitsNoLongerThanItsLimitForAccess) {
  const std::string readOnly = Create("readonly", "", 0444);
  const std::string writeOnly = Create("writeonly", "", 0222);
  AsOrdinaryUser([&] {
    ExpectFailure(mAccess.WaitForAccess(readOnly, 0ms), readOnly, "Permission denied");
    ExpectFailure(mAccess.WaitForAccess(writeOnly, 0ms), writeOnly, "Permission denied");
    const auto begin = std::chrono::steady_clock::now();
    ExpectFailure(mAccess.WaitForAccess(Path("missing"), 25ms), Path("missing"),
                  "No such file or directory");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 25ms);
  });
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
    EXPECT_TRUE(mAccess.WaitForAccess(Path("pattern"), 20s));
  });
  driver.join();
}

TEST_F(ASysfsAccess, FindsAttributesByNameInADirectory) {
  Create("volume", "3\n");
  for (const std::string& directory : {Path("."), Path("./")}) {
    const std::unique_ptr<CSysfsAccess> access = std::make_unique<CPathSysfsAccess>(directory);
    std::string text;
    EXPECT_TRUE(access->WaitForAccess("volume", 0ms));
    EXPECT_TRUE(access->Read("volume", text));
    EXPECT_TRUE(access->Write("volume", text + "5"));
    EXPECT_FALSE(access->Read("pitch", text));
  }
  EXPECT_EQ(mDirectory.ReadFile("volume"), "355");
}

}  // namespace
