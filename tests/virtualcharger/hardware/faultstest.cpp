#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/faults.h"

namespace {

using EMoment = CFaults::EMoment;

constexpr EMoment kMoments[] = {EMoment::Probe, EMoment::OpenForReading, EMoment::OpenForWriting,
                                EMoment::Read, EMoment::Write};

class TheFaults : public ::testing::Test {
 protected:
  int Error(const std::string& device, const std::string& attribute,
            EMoment moment = EMoment::Write) {
    const auto hit = mFaults.Strike(device, attribute, moment);
    return hit ? hit->fault.error : 0;
  }

  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  CFaults mFaults{mClock};
};

TEST_F(TheFaults, StrikeAtTheMomentsOfTheirKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"EIO", "...rw"},      {"EBUSY", "...rw"},  {"EINVAL", "...rw"}, {"EACCES", "pRW.."},
      {"ENOENT", "pRW.."},   {"slow", "...rw"},   {"short", "....w"},  {"garbage", "...r."},
      {"vanished", "....."}, {"ENODEV", "...rw"}, {"EAGAIN", "...rw"}, {"ETIMEDOUT", "...rw"},
      {"frozen", "...r."},
  };
  for (const auto& [name, expected] : cases) {
    const auto fault = FaultNamed(name);
    ASSERT_TRUE(fault) << name;
    mFaults.Set("red", "pattern", *fault);
    std::string struck;
    for (std::size_t index = 0; index < std::size(kMoments); ++index) {
      struck += mFaults.Strike("red", "pattern", kMoments[index]) ? "pRWrw"[index] : '.';
    }
    EXPECT_EQ(struck, expected) << name;
    EXPECT_EQ(mFaults.IsVanished("red"), std::string_view(name) == "vanished");
  }
  EXPECT_EQ(FaultNames().size(), std::size(cases));
  EXPECT_FALSE(FaultNamed("EWHATEVER"));
}

TEST_F(TheFaults, StrikeWhereTheyWereSetAndTheMostExactPlaceWins) {
  mFaults.Set("", "", *FaultNamed("EIO"));
  mFaults.Set("", "pattern", *FaultNamed("EBUSY"));
  mFaults.Set("red", "", *FaultNamed("EINVAL"));
  EXPECT_EQ(Error("blue", "trigger"), EIO);
  EXPECT_EQ(Error("blue", "pattern"), EBUSY);
  EXPECT_EQ(Error("red", "pattern"), EINVAL);
  mFaults.Clear("red", "");
  EXPECT_EQ(Error("red", "pattern"), EBUSY);
  mFaults.ClearAll();
  EXPECT_EQ(Error("red", "pattern"), 0);
}

TEST_F(TheFaults, AreUsedUpByTheWritesTheyWereCountedFor) {
  auto fault = *FaultNamed("EIO");
  fault.writes = 2;
  mFaults.Set("red", "pattern", fault);
  EXPECT_EQ(Error("red", "pattern"), EIO);
  EXPECT_EQ(Error("red", "pattern", EMoment::Read), 0);
  EXPECT_EQ(Error("red", "pattern"), EIO);
  EXPECT_EQ(Error("red", "pattern"), 0);
}

TEST_F(TheFaults, DelayForTheirTimeOrUntilTheyAreClearedOrClosed) {
  auto slow = *FaultNamed("slow");
  slow.delay = std::chrono::seconds(5);
  slow.writes = 1;
  const std::function<void()> ends[] = {
      [&] { mClock->Advance(slow.delay); }, [&] { mFaults.Clear("red", "pattern"); },
      [&] { mFaults.Set("red", "pattern", *FaultNamed("EIO")); }, [&] { mFaults.Close(); }};
  for (const auto& end : ends) {
    mFaults.Set("red", "pattern", slow);
    const auto hit = mFaults.Strike("red", "pattern", EMoment::Write);
    ASSERT_TRUE(hit);
    std::atomic<bool> done = false;
    std::thread writer([&] {
      mFaults.Delay(*hit);
      done = true;
    });
    EXPECT_TRUE(mClock->WaitForWaiter(mClock->Now() + slow.delay));
    mFaults.Clear("blue", "pattern");
    EXPECT_FALSE(done);
    end();
    writer.join();
  }
}

}  // namespace
