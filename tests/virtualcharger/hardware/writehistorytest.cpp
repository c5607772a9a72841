#include <gtest/gtest.h>

#include <thread>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/writehistory.h"

namespace {

class AWriteHistory : public ::testing::Test {
 protected:
  void Add(const std::string& text) { mHistory.Add({{}, "red", "pattern", text, 0, text.size()}); }

  std::string Since(CWriteHistory::Mark mark) const {
    std::string texts;
    for (const auto& write : mHistory.Since(mark)) texts += write.text;
    return texts;
  }

  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  CWriteHistory mHistory{mClock, 3};
};

TEST_F(AWriteHistory, GivesWhatWasWrittenSinceAMarkWithItsTime) {
  Add("a");
  const auto mark = mHistory.End();
  mClock->Advance(std::chrono::seconds(1));
  Add("b");
  Add("c");
  EXPECT_EQ(Since(0), "abc");
  EXPECT_EQ(Since(mark), "bc");
  EXPECT_EQ(Since(mHistory.End()), "");
  EXPECT_EQ(mHistory.Since(mark)[0].time, mClock->Now());
  EXPECT_EQ(mHistory.Since(0)[0].time, mClock->Now() - std::chrono::seconds(1));
}

TEST_F(AWriteHistory, DropsTheOldestAndKeepsItsMarks) {
  for (const auto* text : {"a", "b", "c", "d", "e"}) Add(text);
  EXPECT_EQ(Since(0), "cde");
  EXPECT_EQ(Since(1), "cde");
  EXPECT_EQ(Since(3), "de");
  EXPECT_EQ(mHistory.End(), 5U);
}

TEST_F(AWriteHistory, WaitsForAWriteBehindTheMarkUntilTheDeadline) {
  const auto deadline = mClock->Now() + std::chrono::seconds(1);
  Add("a");
  EXPECT_TRUE(mHistory.WaitBeyond(0, deadline));

  bool seen = false;
  std::thread forWrite([&] { seen = mHistory.WaitBeyond(1, deadline); });
  EXPECT_TRUE(mClock->WaitForWaiter(deadline));
  Add("b");
  forWrite.join();
  EXPECT_TRUE(seen);

  std::thread forDeadline([&] { seen = mHistory.WaitBeyond(2, deadline); });
  EXPECT_TRUE(mClock->WaitForWaiter(deadline));
  mClock->Advance(std::chrono::seconds(1));
  forDeadline.join();
  EXPECT_FALSE(seen);
}

}  // namespace
