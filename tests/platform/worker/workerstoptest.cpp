// How a worker ends: by whom, in the middle of what, and what becomes of the calls that wait.
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

  std::promise<void> mBegun;
  std::promise<void> mRelease;
};

TEST_F(AnEndingWorker, LetsTheRunningCallEndDropsTheRestAndCanBeStartedAgain) {
  Occupy();
  mWorker->NonBlockingCall(Record("queued"));
  std::thread stopper([this] {
    mWorker->Stop();
    mRuns.push_back("stopped");
  });
  while (mWorker->IsRunning()) {
    std::this_thread::yield();
  }
  mWorker->NonBlockingCall(Record("queued late"));
  Release();
  stopper.join();

  mWorker->Sync();
  EXPECT_THROW(mWorker->BlockingCall(Record("refused")), std::runtime_error);
  mWorker->NonBlockingCall(Record("queued while stopped"));
  mWorker->Start();
  StartAndSync();
  EXPECT_TRUE(mWorker->IsRunning());
  EXPECT_THAT(mRuns, ElementsAre("begun", "ended", "stopped", "queued while stopped"));
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
  for (const auto end : {&CWorker::Stop, &CWorker::EmergencyKill}) {
    const auto clock = std::make_shared<AskedClock>();
    SleepingWorker worker("worker", clock);
    std::promise<void> begun;
    worker.NonBlockingCall([&] {
      clock->mAsked = 0;
      begun.set_value();
      while (clock->mAsked < 2) {
        std::this_thread::yield();
      }
      (worker.*end)();
    });
    worker.Start();
    begun.get_future().wait();
    std::thread syncing([&] { worker.Sync(); });
    EXPECT_THROW(worker.BlockingCall([] { ADD_FAILURE() << "ran"; }), std::runtime_error);
    syncing.join();
  }
}

TEST_F(AnEndingWorker, MayBeDestroyedByItsOwnCall) {
  std::promise<void> destroyed;
  CWorker& worker = *mWorker;
  worker.NonBlockingCall([&] {
    mRelease.get_future().wait();
    mWorker.reset();
    destroyed.set_value();
  });
  worker.NonBlockingCall([] { ADD_FAILURE() << "ran on a worker that is gone"; });
  worker.Start();
  Release();
  destroyed.get_future().wait();
}

// What a call holds is released on every way out of the queue, and outside the worker's lock: here
// the release itself calls the worker.
TEST_F(AnEndingWorker, ReleasesWhatACallHoldsAsSoonAsItCannotRunAgain) {
  const struct {
    const char* mName;
    std::chrono::nanoseconds mPeriod;
    bool mRunsFirst;
    void (*mEnd)(CWorker&, CWorkerCall&);
  } cases[] = {
      {"run once", 0ns, true, [](CWorker&, CWorkerCall&) {}},
      {"cancelled", 1s, false, [](CWorker&, CWorkerCall& call) { call.Cancel(); }},
      {"cancelled after a run", 1s, true, [](CWorker&, CWorkerCall& call) { call.Cancel(); }},
      {"stopped before the start", 1s, false, [](CWorker& worker, CWorkerCall&) { worker.Stop(); }},
      {"stopped after a run", 1s, true, [](CWorker& worker, CWorkerCall&) { worker.Stop(); }},
      {"killed", 1s, false, [](CWorker& worker, CWorkerCall&) { worker.EmergencyKill(); }},
  };
  for (const auto& [name, period, runsFirst, end] : cases) {
    SCOPED_TRACE(name);
    std::atomic<bool> released{false};
    mWorker = std::make_unique<SleepingWorker>("worker", mClock);
    WorkerCallHandle handle;
    std::shared_ptr<void> held(nullptr, [&, worker = mWorker.get()](void*) {
      worker->Stop();
      handle->Cancel();
      released = true;
    });
    handle = mWorker->AddCall([held = std::move(held)] {}, mBegin, period);
    if (runsFirst) {
      StartAndSync();
    }
    end(*mWorker, *handle);
    EXPECT_TRUE(released);
  }
}

}  // namespace
