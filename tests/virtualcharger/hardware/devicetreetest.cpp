#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/devicetree.h"
#include "virtualcharger/hardware/statuslight.h"

namespace {

const std::string kRed = "kelo:red:top";

class ADeviceTree : public ::testing::Test {
 protected:
  ADeviceTree() { Write(kRed + "/trigger", "pattern"); }

  // Opens and writes, as one who writes once does: 0 or an errno value.
  int Write(const std::string& path, std::string_view text) {
    std::uint64_t handle = 0;
    if (const int error = mTree.Open(path, true, handle); error != 0) return error;
    return mTree.Write(path, handle, text, mAccepted);
  }

  std::string Read(const std::string& path) {
    std::uint64_t handle = 0;
    std::string text;
    int error = mTree.Open(path, false, handle);
    if (error == 0) error = mTree.Read(path, handle, text);
    return error == 0 ? text : "error " + std::to_string(error);
  }

  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  std::shared_ptr<CFaults> mFaults = std::make_shared<CFaults>(mClock);
  std::shared_ptr<CWriteHistory> mHistory = std::make_shared<CWriteHistory>(mClock);
  CStatusLight mLight{mClock};
  CDeviceTree mTree{mLight.Devices(), mFaults, mHistory};
  std::size_t mAccepted = 0;
};

TEST_F(ADeviceTree, RecordsEveryWriteWithItsResult) {
  const auto mark = mHistory->End();
  EXPECT_EQ(Write(kRed + "/pattern", "1000 0 1000 0"), 0);
  EXPECT_EQ(Write(kRed + "/pattern", "junk"), EINVAL);
  EXPECT_EQ(Write(kRed + "/max_brightness", "5"), EACCES);
  mFaults->Set(kRed, "pattern", *FaultNamed("short"));
  EXPECT_EQ(Write(kRed + "/pattern", "0 0 0 0"), 0);

  std::string record;
  for (const auto& write : mHistory->Since(mark)) {
    record += write.device + '/' + write.attribute + " '" + write.text + "' " +
              std::to_string(write.error) + ' ' + std::to_string(write.accepted) + '\n';
  }
  EXPECT_EQ(record,
            "kelo:red:top/pattern '1000 0 1000 0' 0 13\n"
            "kelo:red:top/pattern 'junk' 22 0\n"
            "kelo:red:top/max_brightness '' 13 0\n"
            "kelo:red:top/pattern '0 0 0 0' 0 3\n");
}

TEST_F(ADeviceTree, TakesOnePageOfAWrite) {
  EXPECT_EQ(Write(kRed + "/min_pattern_brightness", std::string(5000, '0')), 0);
  EXPECT_EQ(mAccepted, 4096U);
}

TEST_F(ADeviceTree, HasFoldersAboveItsDevices) {
  const auto led = mLight.Channels()[0];
  CDeviceTree tree({{"a/b", led}, {"a/c", led}, {"d", led}}, mFaults, mHistory);
  const std::vector<std::string> devices{"b", "c"};
  EXPECT_EQ(tree.List(""), (std::vector<std::string>{"a", "d"}));
  EXPECT_EQ(tree.List("a"), devices);
  EXPECT_TRUE(tree.Look("a")->directory);
  EXPECT_TRUE(tree.Look("a/b")->directory);
  EXPECT_FALSE(tree.Look("a/b/trigger")->directory);
  EXPECT_FALSE(tree.Look("a/x"));
  mFaults->Set("a/b", "", *FaultNamed("vanished"));
  mFaults->Set("a/c", "", *FaultNamed("vanished"));
  EXPECT_FALSE(tree.Look("a"));
}

TEST_F(ADeviceTree, SaysBeforehandWhatOpeningWouldSay) {
  const auto pattern = kRed + "/pattern";
  EXPECT_EQ(mTree.Probe(pattern, true), 0);
  EXPECT_EQ(mTree.Probe(kRed, false), 0);
  EXPECT_EQ(mTree.Probe(kRed + "/max_brightness", false), 0);
  EXPECT_EQ(mTree.Probe(kRed + "/max_brightness", true), EACCES);
  EXPECT_EQ(mTree.Probe(kRed + "/nothing", false), ENOENT);
  mFaults->Set("", "pattern", *FaultNamed("EACCES"));
  EXPECT_EQ(mTree.Probe(pattern, true), EACCES);
}

}  // namespace
