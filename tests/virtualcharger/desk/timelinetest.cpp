#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtualcharger/desk/timeline.h"

namespace {

using namespace std::chrono_literals;

class ATimeline : public testing::Test {
 protected:
  static std::vector<std::string> Words(const Json::Value& rows) {
    std::vector<std::string> words;
    for (const auto& row : rows) {
      words.push_back(Compact(row["t"]) + ' ' + row["lane"].asString() + ' ' +
                      Compact(row["value"]));
    }
    return words;
  }

  const CTimeline::TimePoint mBegin{};
  const CPageClock mClock{mBegin};
  CTimeline mTimeline{mClock};
};

TEST_F(ATimeline, HasARowForEachNewValueAndForEachStep) {
  mTimeline.Set("light", mBegin, 5.5);
  mTimeline.Set("light", mBegin + 1ms, 5.5);
  mTimeline.Set("daemon", mBegin + 1250us, "running");
  mTimeline.SetError(1004, mBegin + 2ms, false);
  mTimeline.SetError(1004, mBegin + 3ms, true);
  mTimeline.SetError(1005, mBegin + 4ms, true);
  mTimeline.SetError(1004, mBegin + 5ms, false);
  mTimeline.AddStep(mBegin + 6ms, "heal");
  mTimeline.AddStep(mBegin + 7ms, "heal");
  const std::vector<std::string> expected{"0.0 light 5.5",
                                          R"(1.25 daemon "running")",
                                          R"(3.0 error {"identifier":1004,"on":true})",
                                          R"(4.0 error {"identifier":1005,"on":true})",
                                          R"(5.0 error {"identifier":1004,"on":false})",
                                          R"(6.0 step "heal")",
                                          R"(7.0 step "heal")"};
  EXPECT_EQ(Words(mTimeline.TakeNew()), expected);
  EXPECT_EQ(Words(mTimeline.Rows()), expected);
  mTimeline.Set("light", mBegin + 8ms, 6);
  EXPECT_THAT(Words(mTimeline.TakeNew()), testing::ElementsAre("8.0 light 6"));
  EXPECT_TRUE(mTimeline.TakeNew().empty());
}

TEST_F(ATimeline, ForgetsWhatIsOldButNotWhatStillHolds) {
  mTimeline.Set("connector", mBegin, "available");
  mTimeline.Set("connector", mBegin + 1s, "charging");
  mTimeline.AddStep(mBegin + 2s, "heal");
  mTimeline.Set("light", mBegin + CTimeline::kSpan + 3s, 7);
  EXPECT_THAT(Words(mTimeline.Rows()),
              testing::ElementsAre(R"(1000.0 connector "charging")", "603000.0 light 7"));
}

TEST_F(ATimeline, IsBoundedHoweverMuchHappens) {
  mTimeline.Set("daemon", mBegin, "running");
  for (int step = 0; step < 3 * static_cast<int>(CTimeline::kMostRows); ++step) {
    mTimeline.Set("light", mBegin, step);
  }
  EXPECT_EQ(mTimeline.Rows().size(), CTimeline::kMostRows + 2);
  EXPECT_EQ(mTimeline.TakeNew().size(), CTimeline::kMostRows);
  EXPECT_EQ(Words(mTimeline.Rows()).front(), R"(0.0 daemon "running")");
}

}  // namespace
