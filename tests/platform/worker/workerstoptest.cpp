// How a worker ends: by whom, in the middle of what, and what becomes of the calls that wait.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "tests/platform/worker/workerfixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class AnEndingWorker : public WorkerFixture {
 protected:
  // Starts the worker and keeps it inside a call until Release.
  void Occupy() {
    mWorker->NonBlockingCall([this] {
      mRuns.push_back("begun");
      mBegun.set_value();
      mRelease.get_future().wait();
      mRuns.push_back("ended");
    });
    mWorker->Start();
    mBegun.get_future().wait();
  }

  void Release() { mRelease.set_value(); }

  void WaitUntilAskedToEnd() {
    while (mWorker->IsRunning()) {
      std::this_thread::yield();
    }
  }

  std::promise<void> mBegun;
  std::promise<void> mRelease;
};

TEST_F(AnEndingWorker, LetsTheRunningCallEndAndDropsTheRest) {
  Occupy();
  mWorker->NonBlockingCall(Record("queued"));
  std::thread stopper([this] {
    mWorker->Stop();
    mRuns.push_back("stopped");
  });
  WaitUntilAskedToEnd();
  mWorker->NonBlockingCall(Record("queued late"));
  Release();
  stopper.join();
  mWorker->Stop();
  EXPECT_THAT(mRuns, ElementsAre("begun", "ended", "stopped"));

  mWorker->Start();
  mWorker->Sync();
  EXPECT_EQ(mRuns.size(), 3u);
}

TEST_F(AnEndingWorker, CanBeStartedAgain) {
  mWorker->Start();
  mWorker->Start();
  mWorker->Stop();
  EXPECT_FALSE(mWorker->IsRunning());
  mWorker->Sync();
  mWorker->NonBlockingCall(Record("queued while stopped"));
  mWorker->Start();
  EXPECT_TRUE(mWorker->IsRunning());
  mWorker->BlockingCall(Record("blocking"));
  EXPECT_THAT(mRuns, ElementsAre("queued while stopped", "blocking"));
}

TEST_F(AnEndingWorker, MayBeStoppedByItsOwnCallAndByOthersAtOnce) {
  mWorker->NonBlockingCall([this] {
    mBegun.set_value();
    mWorker->Stop();
    mRuns.push_back("asked");
  });
  mWorker->NonBlockingCall(Record("queued"));
  mWorker->Start();
  mBegun.get_future().wait();
  std::thread other([this] { mWorker->Stop(); });
  mWorker->Stop();
  other.join();
  EXPECT_FALSE(mWorker->IsRunning());
  EXPECT_THAT(mRuns, ElementsAre("asked"));
}

TEST_F(AnEndingWorker, DoesNotWaitWhenItIsKilled) {
  Occupy();
  mWorker->NonBlockingCall(Record("queued"));
  mWorker->AddCall(Record("timed"), mBegin, 1s);
  mWorker->EmergencyKill();
  EXPECT_FALSE(mWorker->IsRunning());
  EXPECT_THAT(mRuns, ElementsAre("begun"));
  Release();
  mWorker->Stop();
  EXPECT_THAT(mRuns, ElementsAre("begun", "ended"));
}

TEST_F(AnEndingWorker, RefusesBlockingCallsWhenItDoesNotRun) {
  EXPECT_THROW(mWorker->BlockingCall(Record("not started")), std::runtime_error);
  mWorker->Start();
  mWorker->Stop();
  EXPECT_THROW(mWorker->BlockingCall(Record("stopped")), std::runtime_error);
  mWorker->Start();
  mWorker->Sync();
  EXPECT_THAT(mRuns, ElementsAre());
}

// Tells how many calls have been posted to a worker that is busy: each asks for the time once.
class AskedClock : public ManualClock {
 public:
  TimePoint Now() const override {
    ++mAsked;
    return ManualClock::Now();
  }

  mutable std::atomic<int> mAsked{0};
};

TEST_F(AnEndingWorker, FailsTheBlockingCallsThatStillWait) {
  const struct {
    const char* mName;
    bool mByItsOwnCall;
    void (*mEnd)(CWorker&);
  } cases[] = {
      {"stopped", false, [](CWorker& worker) { worker.Stop(); }},
      {"killed", false, [](CWorker& worker) { worker.EmergencyKill(); }},
      {"stopped by its own call", true, [](CWorker& worker) { worker.Stop(); }},
  };
  for (const auto& ending : cases) {
    SCOPED_TRACE(ending.mName);
    const auto clock = std::make_shared<AskedClock>();
    SleepingWorker worker("worker", clock);
    std::promise<void> begun;
    std::promise<void> release;
    worker.NonBlockingCall([&] {
      begun.set_value();
      release.get_future().wait();
      if (ending.mByItsOwnCall) {
        ending.mEnd(worker);
      }
    });
    worker.Start();
    begun.get_future().wait();
    clock->mAsked = 0;
    std::thread waiting([&] {
      EXPECT_THROW(worker.BlockingCall([] { ADD_FAILURE() << "ran"; }), std::runtime_error);
    });
    std::thread syncing([&] { worker.Sync(); });
    while (clock->mAsked < 2) {
      std::this_thread::yield();
    }
    std::thread outside([&] {
      if (!ending.mByItsOwnCall) {
        ending.mEnd(worker);
      }
    });
    while (!ending.mByItsOwnCall && worker.IsRunning()) {
      std::this_thread::yield();
    }
    release.set_value();
    for (std::thread* thread : {&waiting, &syncing, &outside}) {
      thread->join();
    }
  }
}

TEST_F(AnEndingWorker, CutsASleepShort) {
  mWorker->NonBlockingCall([this] { mRuns.push_back(mWorker->Sleep(1h) ? "slept" : "cut short"); });
  mWorker->Start();
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 1h));
  mWorker->Stop();
  EXPECT_THAT(mRuns, ElementsAre("cut short"));
}

TEST_F(AnEndingWorker, DoesNotWaitForATimedCallThatIsFarAway) {
  mWorker->AddCall(Record("far"), mBegin + 1h, 0ns);
  mWorker->Start();
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 1h));
  mWorker.reset();
  EXPECT_THAT(mRuns, ElementsAre());
}

TEST_F(AnEndingWorker, MayBeDestroyedByItsOwnCall) {
  std::promise<void> owned;
  std::promise<void> destroyed;
  CWorker& worker = *mWorker;
  worker.NonBlockingCall([this, &owned, &destroyed] {
    owned.get_future().wait();
    mWorker.reset();
    destroyed.set_value();
  });
  worker.NonBlockingCall([] { ADD_FAILURE() << "ran on a worker that is gone"; });
  worker.Start();
  owned.set_value();
  destroyed.get_future().wait();
}

// What a call holds is released on every way out of the queue, and outside the worker's lock: here
// the release itself calls the worker.
TEST_F(AnEndingWorker, ReleasesWhatACallHoldsAsSoonAsItCannotRunAgain) {
  const struct {
    const char* mName;
    std::chrono::nanoseconds mPeriod;
    std::function<void(CWorker&, CWorkerCall&)> mEnd;
  } cases[] = {
      {"run once", 0ns,
       [](CWorker& worker, CWorkerCall&) {
         worker.Start();
         worker.Sync();
       }},
      {"cancelled", 1s, [](CWorker&, CWorkerCall& call) { call.Cancel(); }},
      {"cancelled after a run", 1s,
       [](CWorker& worker, CWorkerCall& call) {
         worker.Start();
         worker.Sync();
         call.Cancel();
       }},
      {"stopped before the start", 1s, [](CWorker& worker, CWorkerCall&) { worker.Stop(); }},
      {"stopped after a run", 1s,
       [](CWorker& worker, CWorkerCall&) {
         worker.Start();
         worker.Sync();
         worker.Stop();
       }},
      {"killed", 1s, [](CWorker& worker, CWorkerCall&) { worker.EmergencyKill(); }},
  };
  for (const auto& [name, period, end] : cases) {
    SCOPED_TRACE(name);
    std::atomic<bool> released{false};
    SleepingWorker worker("worker", mClock);
    WorkerCallHandle handle;
    std::shared_ptr<void> held(nullptr, [&](void*) {
      worker.IsRunning();
      worker.Stop();
      handle->Cancel();
      released = true;
    });
    handle = worker.AddCall([held = std::move(held)] {}, mBegin, period);
    end(worker, *handle);
    EXPECT_TRUE(released);
  }
}

}  // namespace
