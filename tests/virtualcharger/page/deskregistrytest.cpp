#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/support/temporarydirectory.h"
#include "virtualcharger/page/deskregistry.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ADeskRegistry : public ::testing::Test {
 protected:
  void SetUp() override { setenv("XDG_RUNTIME_DIR", mRuntime.Path().c_str(), 1); }
  void TearDown() override { unsetenv("XDG_RUNTIME_DIR"); }

  static std::string Refusal(const std::string& name) {
    try {
      const CDeskRegistry registry(name);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  const TemporaryDirectory mRuntime;
};

TEST_F(ADeskRegistry, ShowsAChargerToOthersFromItsAnnouncementToItsEnd) {
  const CDeskRegistry left("left");
  {
    CDeskRegistry right("right");
    EXPECT_THAT(left.Others(), IsEmpty());
    right.Announce({"", 0, 8766, "http://127.0.0.1:8766/#a1", "/r/etc/ovra.json", "/r/run"});
    EXPECT_THAT(right.Others(), IsEmpty());
    const auto others = left.Others();
    ASSERT_EQ(others.size(), 1U);
    EXPECT_EQ(others[0].name, "right");
    EXPECT_EQ(others[0].pid, getpid());
    EXPECT_EQ(others[0].port, 8766);
    EXPECT_EQ(others[0].url, "http://127.0.0.1:8766/#a1");
    EXPECT_EQ(others[0].store, "/r/etc/ovra.json");
    EXPECT_EQ(others[0].sockets, "/r/run");
    EXPECT_EQ(std::filesystem::status(RunningChargersFolder() + "/right.json").permissions(),
              std::filesystem::perms(0600))
        << "the address steers";
  }
  EXPECT_THAT(left.Others(), IsEmpty());
}

TEST_F(ADeskRegistry, KeepsANameForOneChargerAtATime) {
  {
    const CDeskRegistry first("charger");
    EXPECT_THAT(Refusal("charger"),
                AllOf(HasSubstr("\"charger\" runs already"), HasSubstr(std::to_string(getpid())),
                      HasSubstr("--name")));
  }
  EXPECT_EQ(Refusal("charger"), "");
  const CDeskRegistry first;
  const CDeskRegistry second;
  EXPECT_EQ(first.Name() + ' ' + second.Name(), "charger charger-2");
  for (const auto* name : {"", ".hidden", "-x", "a/b", "../x", "white space", "\xc3\xa4"}) {
    EXPECT_THAT(Refusal(name), HasSubstr("cannot be a charger's name")) << name;
  }
  EXPECT_THAT(Refusal(std::string(33, 'x')), HasSubstr("at most 32"));
}

TEST_F(ADeskRegistry, TakesAnEntryWithoutALockForALeftover) {
  std::filesystem::create_directory(RunningChargersFolder());
  chmod(RunningChargersFolder().c_str(), 0700);
  const auto killed = mRuntime.WriteFile("virtual-charger/killed.json",
                                         R"({"name": "killed", "pid": 1, "port": 8765})");
  EXPECT_THAT(RunningChargers(), IsEmpty());
  CDeskRegistry next("next");
  next.Announce({.port = 8765});
  EXPECT_FALSE(std::filesystem::exists(killed));
  EXPECT_THAT(RunningChargers(), ElementsAre(Field(&SRunningCharger::name, "next")));
}

TEST_F(ADeskRegistry, TrustsNoFolderThatOthersMayWriteTo) {
  EXPECT_THAT(RunningChargers(), IsEmpty());
  std::filesystem::create_directory(RunningChargersFolder());
  chmod(RunningChargersFolder().c_str(), 0777);
  EXPECT_THAT(Refusal("charger"), HasSubstr(RunningChargersFolder() + " must be"));
  EXPECT_THROW(RunningChargers(), std::runtime_error);
}

}  // namespace
