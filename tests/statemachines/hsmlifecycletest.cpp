#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <thread>
#include <typeinfo>

#include "tests/statemachines/doorfixture.h"

namespace {

using namespace std::chrono_literals;

class AMachinesLife : public CDoorFixture {
 protected:
  static bool HasVerdict(const std::future<bool>& handled) {
    return handled.wait_for(0s) == std::future_status::ready;
  }

  // False when it has not become true within a limit that only a fault reaches.
  static bool Eventually(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + 20s;
    while (!condition() && std::chrono::steady_clock::now() < limit) {
      std::this_thread::yield();
    }
    return condition();
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
  bool ranInside = false;
  mHandler->mHook = [&](const std::string&) { ranInside = mMachine->IsRunning(); };
  Post<Finish>();
  mMachine->Run();
  EXPECT_TRUE(ranInside);
  EXPECT_FALSE(mMachine->IsRunning());
  EXPECT_EQ(mLog.Lines().back().mText, "State Ended: entry");
}

TEST_F(AMachinesLife, WaitsForEventsUntilAnotherThreadStopsIt) {
  std::jthread runner([this] { mMachine->Run(); });
  EXPECT_TRUE(Post<Pull>().get());
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

TEST_F(AMachinesLife, KeepsTheVerdictForWhoAsksLate) {
  const auto taken = std::make_shared<Pull>();
  const auto rejected = std::make_shared<Opened>();
  mMachine->PostEvent(taken);
  mMachine->PostEvent(rejected);
  RunUntilIdle();
  EXPECT_TRUE(taken->GetHandled().get());
  EXPECT_FALSE(rejected->GetHandled().get());
}

TEST_F(AMachinesLife, TellsTheLeafThatItIsIn) {
  EXPECT_EQ(mMachine->CurrentState(), nullptr);
  RunUntilIdle();
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Closed);
  After<Push>();
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Open);
  Post<Finish>();
  mMachine->Run();
  EXPECT_EQ(mMachine->CurrentState()->GetId(), Ended);
}

TEST_F(AMachinesLife, LeavesWhatIsQueuedAtItsStopToTheNextRun) {
  Post<Halt>();
  auto late = Post<Push>();
  mMachine->Run();
  EXPECT_FALSE(HasVerdict(late));
  mLog.Clear();
  RunUntilIdle();
  EXPECT_TRUE(late.get());
  // No second initial entry.
  EXPECT_EQ(Trace().front(), "State Closed: event recv Push");
}

TEST_F(AMachinesLife, DropsWhatIsStillQueuedWhenItsOwnerSaysSo) {
  Post<Finish>();
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

  auto next = Post<Pull>();
  Post<Halt>();
  EXPECT_THROW(next.get(), std::future_error);
}

TEST_F(AMachinesLife, TakesEventsAgainWhenItRunsAfterADrop) {
  RunUntilIdle();
  mMachine->DropQueuedEvents();
  std::jthread runner([this] { mMachine->Run(); });
  EXPECT_TRUE(Eventually([this] { return mMachine->IsRunning(); }));
  EXPECT_TRUE(Post<Pull>().get());
  Post<Finish>();
}

TEST_F(AMachinesLife, ReleasesQueuedEventsWithItself) {
  auto event = std::make_shared<Pull>();
  const std::weak_ptr<Pull> watched = event;
  auto handled = event->GetHandled();
  mMachine->PostEvent(std::move(event));
  EXPECT_FALSE(watched.expired());
  mHandler->SetMachine(nullptr);
  mMachine.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_THROW(handled.get(), std::future_error);
}

TEST_F(AMachinesLife, HoldsNoEventWhileItWaitsForTheNext) {
  std::weak_ptr<Pull> watched;
  std::jthread runner([this] { mMachine->Run(); });
  {
    auto event = std::make_shared<Pull>();
    watched = event;
    mMachine->PostEvent(std::move(event));
  }
  EXPECT_TRUE(Eventually([&] { return watched.expired(); }));
  mMachine->Stop();
}

TEST_F(AMachinesLife, EndsWithBadTypeidOnANullEvent) {
  mMachine->PostEvent(nullptr);
  EXPECT_THROW(mMachine->Run(), std::bad_typeid);
}

TEST_F(AMachinesLife, LetsAnActionsExceptionOutAndKeepsTheLeafThatItWasIn) {
  ThrowIn("light on");
  auto push = Post<Push>();
  Post<Halt>();
  mMachine->Run();
  EXPECT_THROW(mMachine->Run(), std::runtime_error);
  EXPECT_TRUE(push.get());
  mLog.Clear();
  Post<Opened>();
  EXPECT_THROW(mMachine->Run(), std::runtime_error);
  EXPECT_EQ(Trace().front(), "State Opening: event recv Opened");
}

TEST_F(AMachinesLife, PassesEveryVerdictToItsOwnPoster) {
  constexpr int kPosters = 4;
  constexpr int kEvents = 200;
  std::jthread runner([this] { mMachine->Run(); });
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> posters;
    for (int poster = 0; poster < kPosters; ++poster) {
      posters.emplace_back([&, poster] {
        for (int i = 0; i < kEvents; ++i) {
          const bool expected = (i + poster) % 2 == 0;
          const bool handled = expected ? Post<Pull>().get() : Post<Opened>().get();
          wrong += handled != expected;
        }
      });
    }
  }
  Post<Finish>();
  runner.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(mLog.Count(Log::ELogLevel::ETrace, "event recv"), kPosters * kEvents + 1U);
}

class AMachinesDeath : public AMachinesLife {
 protected:
  AMachinesDeath() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(AMachinesDeath, FollowsAnExceptionFromTheInitialEntry) {
  ThrowIn("enter closed");
  EXPECT_EXIT(
      {
        try {
          mMachine->Run();
        } catch (...) {
        }
      },
      testing::KilledBySignal(SIGABRT), "no enter closed");
}

TEST_F(AMachinesDeath, FollowsAnExceptionFromAnEntryThatIsDeclaredSo) {
  ThrowIn("lock");
  EXPECT_EXIT(
      {
        Post<Seal>();
        try {
          mMachine->Run();
        } catch (...) {
        }
      },
      testing::KilledBySignal(SIGABRT), "no lock");
}

}  // namespace
