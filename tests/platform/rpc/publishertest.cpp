#include <gtest/gtest.h>

#include "platform/rpc/publisher.h"

namespace {

// Messages are numbers; those of the same ten replace each other.
bool SameTen(const int& a, const int& b) {
  return a / 10 == b / 10;
}

using Backlog = Rpc::CBacklog<int>;

std::vector<int> Drain(Backlog& backlog) {
  std::vector<int> drained;
  while (!backlog.IsEmpty()) {
    drained.push_back(backlog.Pop().message);
  }
  return drained;
}

TEST(ABacklog, KeepsOrderAndRepetitionsBelowItsLimit) {
  Backlog backlog(&SameTen);
  for (const int message : {11, 21, 11, 12}) {
    backlog.Push({message, nullptr});
  }
  EXPECT_EQ(Drain(backlog), (std::vector{11, 21, 11, 12}));
}

TEST(ABacklog, DropsWhatIsReplacedBeforeWhatIsNotWhenItIsFull) {
  Backlog backlog(&SameTen);
  const int limit = static_cast<int>(Backlog::kLimit);
  const auto delivery = std::make_shared<Rpc::CDelivery>();
  backlog.Push({10, nullptr});
  backlog.Push({20, delivery});
  delivery->Expect();
  for (int i = 2; i < limit - 1; ++i) {
    backlog.Push({i * 1000, nullptr});
  }
  backlog.Push({21, nullptr});
  backlog.Push({5, nullptr});  // over the limit: 20 is out of date, 10 is not

  ipc::MResult result;
  EXPECT_TRUE(delivery->Wait(std::chrono::milliseconds(0), result)) << "nobody waits for 20";
  backlog.Push({6, nullptr});  // now nothing but the newest two is replaced: 5 is
  const auto kept = Drain(backlog);
  EXPECT_EQ(kept.size(), Backlog::kLimit);
  EXPECT_EQ(kept.front(), 10);
  EXPECT_EQ(kept.back(), 6);
}

TEST(ABacklog, DropsTheOldestWhenNothingIsReplaced) {
  Backlog backlog(&SameTen);
  const int limit = static_cast<int>(Backlog::kLimit);
  for (int i = 0; i <= limit; ++i) {
    backlog.Push({i * 10, nullptr});
  }
  const auto kept = Drain(backlog);
  EXPECT_EQ(kept.front(), 10);
  EXPECT_EQ(kept.back(), limit * 10);
}

TEST(ADelivery, IsCompleteWhenAllHaveRepliedAndKeepsTheFirstRefusal) {
  ipc::MResult ok;
  ipc::MResult first;
  first.set_result(ipc::EResultIllegal);
  first.set_text("first");
  ipc::MResult second = first;
  second.set_text("second");

  Rpc::CDelivery delivery;
  delivery.Expect();
  delivery.Expect();
  delivery.Expect();
  delivery.Complete(ok);
  delivery.Complete(first);
  ipc::MResult result;
  EXPECT_FALSE(delivery.Wait(std::chrono::milliseconds(0), result));
  delivery.Complete(second);
  EXPECT_TRUE(delivery.Wait(std::chrono::milliseconds(0), result));
  EXPECT_EQ(result.text(), "first");
}

}  // namespace
