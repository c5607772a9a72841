#include <gtest/gtest.h>
#include <linux/kd.h>

#include <cerrno>
#include <thread>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/tonefile.h"

namespace {

using std::chrono::milliseconds;

class AToneFile : public ::testing::Test {
 protected:
  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  std::shared_ptr<CFaults> mFaults = std::make_shared<CFaults>(mClock);
  CToneFile mTone{mFaults, mClock};
};

TEST_F(AToneFile, RemembersEveryToneWithItsTime) {
  const auto begin = mClock->Now();
  EXPECT_EQ(mTone.Control("", KIOCSOUND, 298), 0);
  mClock->Advance(milliseconds(300));
  EXPECT_EQ(mTone.Control("", KIOCSOUND, 0), 0);
  EXPECT_EQ(mTone.Control("", KDMKTONE, 1), ENOTTY);
  const auto tones = mTone.Since(0);
  ASSERT_EQ(tones.size(), 2U);
  EXPECT_EQ(tones[0].divisor, 298U);
  EXPECT_EQ(tones[0].time, begin);
  EXPECT_EQ(tones[1].divisor, 0U);
  EXPECT_EQ(tones[1].time, begin + milliseconds(300));
  for (const unsigned divisor : {0U, 298U, 300U, 0U, 0U, 298U})
    mTone.Control("", KIOCSOUND, divisor);
  EXPECT_EQ(mTone.Beeps(), 3U);
  EXPECT_EQ(mTone.Since(tones[1].end).size(), 6U);
}

TEST_F(AToneFile, SoundsOnlyWhenABlockedRequestGoesOn) {
  auto slow = *FaultNamed("slow");
  slow.delay = std::chrono::seconds(1);
  mFaults->Set(kToneDevice, "", slow);
  std::thread caller([&] { EXPECT_EQ(mTone.Control("", KIOCSOUND, 298), 0); });
  EXPECT_TRUE(mClock->WaitForWaiter(mClock->Now() + slow.delay));
  EXPECT_EQ(mTone.End(), 0U);
  mFaults->ClearAll();
  caller.join();
  EXPECT_EQ(mTone.End(), 1U);
}

}  // namespace
