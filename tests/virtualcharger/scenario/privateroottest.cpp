#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "platform/rpc/communicationconfig.h"
#include "tests/support/temporarydirectory.h"
#include "virtualcharger/scenario/privateroot.h"

namespace {

namespace fs = std::filesystem;

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

TEST(APrivateRoot, TakesAwayWhatKilledRunsLeftAndNothingElse) {
  const TemporaryDirectory runtime;
  setenv("XDG_RUNTIME_DIR", runtime.Path().c_str(), 1);
  for (const auto* file : {"charger-killed/lock", "charger-killed/etc/ovra.json",
                           "charger-mine/notes", "other/lock"}) {
    runtime.WriteFile(file, "");
  }
  std::string kept;
  {
    const CPrivateRoot first;
    CPrivateRoot second;
    second.Keep();
    kept = second.Path();
    EXPECT_TRUE(fs::exists(first.Store()));
    EXPECT_FALSE(fs::exists(runtime.Path() / "charger-killed"));
  }
  const CPrivateRoot last;
  EXPECT_TRUE(fs::exists(kept));
  EXPECT_TRUE(fs::exists(runtime.Path() / "charger-mine"));
  EXPECT_TRUE(fs::exists(runtime.Path() / "other"));
  EXPECT_EQ(std::distance(fs::directory_iterator(runtime.Path()), fs::directory_iterator()), 4);
  unsetenv("XDG_RUNTIME_DIR");
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
