#include <atomic>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <typeinfo>

#include "tests/statemachines/doorfixture.h"
#include "tests/support/eventually.h"

namespace {

using namespace std::chrono_literals;

class AMachinesLife : public CDoorFixture {
 protected:
  static bool HasVerdict(const std::future<bool>& handled) {
    return handled.wait_for(0s) == std::future_status::ready;
  }

  void ThrowIn(const std::string& wanted) {
    mHandler->mHook = [wanted](const std::string& action) {
      if (action == wanted) {
        throw std::runtime_error("no " + wanted);
      }
    };
  }
};

TEST_F(AMachinesLife, RunsOnlyBetweenRunAndTheFinalLeaf) {
  EXPECT_FALSE(mMachine->IsRunning());
  EXPECT_EQ(mMachine->CurrentState(), nullptr);
  bool ranInside = false;
  mHandler->mHook = [&](const std::string&) { ranInside = mMachine->IsRunning(); };
  After<Push>();
  EXPECT_TRUE(ranInside);
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Open);
  Post<Finish>();
  mMachine->Run();
  EXPECT_FALSE(mMachine->IsRunning());
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Ended);
}

TEST_F(AMachinesLife, WaitsForEventsAndHoldsNoneUntilAnotherThreadStopsIt) {
  std::jthread runner([this] { mMachine->Run(); });
  auto event = std::make_shared<Pull>();
  const std::weak_ptr<Pull> watched = event;
  mMachine->PostEvent(std::move(event));
  EXPECT_TRUE(Eventually([&] { return watched.expired(); }));
  EXPECT_TRUE(mMachine->IsRunning());
  mMachine->Stop();
  runner.join();
  EXPECT_FALSE(mMachine->IsRunning());
}

TEST_F(AMachinesLife, GivesTheVerdictBeforeTheTransitionsActionsHaveEnded) {
  std::promise<void> verdictSeen;
  mHandler->mHook = [seen = verdictSeen.get_future().share()](const std::string& action) {
    if (action == "lock") {
      seen.wait();
    }
  };
  std::jthread runner([this] { mMachine->Run(); });
  auto handled = Post<Seal>();
  EXPECT_EQ(handled.wait_for(20s), std::future_status::ready);
  verdictSeen.set_value();
  EXPECT_TRUE(handled.get());
  Post<Finish>();
}

TEST_F(AMachinesLife, LeavesWhatIsQueuedAtItsStopToTheNextRun) {
  Post<Halt>();
  auto late = Post<Push>();
  mMachine->Run();
  EXPECT_FALSE(HasVerdict(late));
  mLog.Clear();
  // No second initial entry.
  EXPECT_EQ(TraceOf<>().front(), "State Closed: event recv Push");
  EXPECT_TRUE(late.get());
}

TEST_F(AMachinesLife, DropsWhatItsOwnerSaysAndTakesEventsAgainWhenItRuns) {
  Post<Halt>();
  // A poster that waits may hold the event as well.
  const auto held = std::make_shared<Pull>();
  auto queued = held->GetHandled();
  mMachine->PostEvent(held);
  mMachine->PostEvent(nullptr);
  mMachine->Run();
  EXPECT_FALSE(HasVerdict(queued));
  mMachine->DropQueuedEvents();
  EXPECT_THROW(queued.get(), std::future_error);
  EXPECT_THROW(Post<Pull>().get(), std::future_error);

  std::jthread runner([this] { mMachine->Run(); });
  EXPECT_TRUE(Eventually([this] { return mMachine->IsRunning(); }));
  EXPECT_TRUE(Post<Pull>().get());
  Post<Finish>();
}

TEST_F(AMachinesLife, EndsWithBadTypeidOnANullEvent) {
  mMachine->PostEvent(nullptr);
  EXPECT_THROW(mMachine->Run(), std::bad_typeid);
}

TEST_F(AMachinesLife, LetsAnActionsExceptionOutAndKeepsTheLeafThatItWasIn) {
  ThrowIn("light on");
  Post<Push>();
  EXPECT_THROW(mMachine->Run(), std::runtime_error);
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Opening);
  EXPECT_TRUE(Verdict<Finish>());
}

TEST_F(AMachinesLife, PassesEveryVerdictToItsOwnPoster) {
  std::jthread runner([this] { mMachine->Run(); });
  std::atomic<int> wrong = 0;
  std::vector<std::jthread> posters;
  for (int poster = 0; poster < 4; ++poster) {
    posters.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        wrong += !Post<Pull>().get();
        wrong += Post<Opened>().get();
      }
    });
  }
  posters.clear();
  Post<Finish>();
  EXPECT_EQ(wrong, 0);
}

TEST_F(AMachinesLife, EndsTheProcessWhereAnEntryThatMustNotThrowDoes) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const std::string entry : {"enter closed", "lock"}) {
    EXPECT_EXIT(
        {
          ThrowIn(entry);
          Post<Seal>();
          try {
            mMachine->Run();
          } catch (...) {
          }
        },
        testing::KilledBySignal(SIGABRT), "no " + entry);
  }
}

}  // namespace
