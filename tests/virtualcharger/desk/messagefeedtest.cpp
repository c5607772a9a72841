#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtualcharger/desk/messagefeed.h"

namespace {

class AMessageFeed : public testing::Test {
 protected:
  void Begin(const std::string& peer, int number, int microseconds, const std::string& text) {
    mFeed.Take(peer, number,
               R"({"from":"daemon","to":")" + peer + R"(","text":")" + text + R"(","t":)" +
                   std::to_string(microseconds) + '}');
  }
  void End(const std::string& peer, int number, int microseconds) {
    mFeed.Take(peer, number,
               R"({"verdict":"Ok","ok":true,"t":)" + std::to_string(microseconds) + '}');
  }
  static std::vector<std::string> Words(const Json::Value& rows) {
    std::vector<std::string> words;
    for (const auto& row : rows) {
      words.push_back(Compact(row["id"]) + ' ' + Compact(row["t"]) + ' ' + row["text"].asString() +
                      " [" + row["verdict"].asString() + "] " + Compact(row["ms"]));
    }
    return words;
  }

  const CPageClock mClock{{}};
  CMessageFeed mFeed{mClock};
};

TEST_F(AMessageFeed, TellsAMessageWhenItBeginsAndAgainWhenItHasEnded) {
  Begin("meter", 1, 1500, "40 %");
  Begin("diagnostics", 1, 2000, "LED state");
  End("meter", 1, 4000);
  EXPECT_THAT(Words(mFeed.TakeNew()),
              testing::ElementsAre("1 1.5 40 % [Ok] 2.5", "2 2.0 LED state [] null"));
  End("diagnostics", 1, 2250);
  EXPECT_THAT(Words(mFeed.TakeNew()), testing::ElementsAre("2 2.0 LED state [Ok] 0.25"));
  EXPECT_TRUE(mFeed.TakeNew().empty());
  EXPECT_EQ(mFeed.Rows().size(), 2U);
}

TEST_F(AMessageFeed, TellsWhatAPeerThatWasStartedAgainHasLost) {
  Begin("meter", 1, 1000, "40 %");
  mFeed.TakeNew();
  Begin("meter", 1, 5000, "50 %");
  End("meter", 1, 6000);
  EXPECT_THAT(Words(mFeed.TakeNew()),
              testing::ElementsAre("1 1.0 40 % [the peer has ended] 4.0", "2 5.0 50 % [Ok] 1.0"));
}

TEST_F(AMessageFeed, KeepsTheNewestAndTakesNonsense) {
  mFeed.Take("meter", 7, "{");
  mFeed.Take("meter", 7, "[1]");
  Begin("meter", 1, 0, "first");
  for (int number = 2; number <= static_cast<int>(CMessageFeed::kKept) + 1; ++number) {
    Begin("meter", number, number, "next");
  }
  End("meter", 1, 9);
  EXPECT_EQ(mFeed.Rows().size(), CMessageFeed::kKept);
  EXPECT_EQ(Words(mFeed.Rows()).front(), "2 0.002 next [] null");
}

}  // namespace
