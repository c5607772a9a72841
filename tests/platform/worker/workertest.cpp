#include <gmock/gmock.h>
#include <pthread.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "platform/worker/worker.h"
#include "tests/platform/worker/workerfixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;

using AWorker = WorkerFixture;

TEST_F(AWorker, RunsCallsByDueTimeAndThenInTheOrderOfPosting) {
  mWorker->AddCall(Record("2 s"), mBegin + 2s, 0ns);
  mWorker->NonBlockingCall(Record("now, first"));
  mWorker->AddCall(Record("1 s, first"), mBegin + 1s, 0ns);
  mWorker->AddCall(Record("1 s, second"), mBegin + 1s, 0ns);
  mWorker->AddCall(Record("now, second"), mBegin, 0ns);
  mWorker->AddCall(Record("overdue"), mBegin - 1s, 0ns);
  mWorker->NonBlockingCall(Record("now, third"));

  mWorker->Start();
  mWorker->Sync();
  EXPECT_THAT(mRuns, ElementsAre("overdue", "now, first", "now, second", "now, third"));

  mRuns.clear();
  AdvanceAndSync(3s);
  EXPECT_THAT(mRuns, ElementsAre("1 s, first", "1 s, second", "2 s"));
}

struct TimedCall {
  const char* mName;
  std::chrono::milliseconds mStart;
  std::chrono::milliseconds mPeriod;
  std::vector<std::chrono::milliseconds> mSteps;
  std::vector<std::chrono::milliseconds> mRunsAt;
};

TEST_F(AWorker, RunsATimedCallAtItsStartAndOnceAPeriodWithoutCatchingUp) {
  const TimedCall cases[] = {
      {"once, at its point and not before", 1000ms, 0ms, {999ms, 1ms, 5000ms}, {1000ms}},
      {"once, at once where the point has passed", -500ms, 0ms, {1000ms}, {0ms}},
      {"a negative period is no period", 0ms, -200ms, {200ms, 200ms}, {0ms}},
      {"each period", 0ms, 200ms, {200ms, 200ms, 200ms}, {0ms, 200ms, 400ms, 600ms}},
      {"not before the period is over", 0ms, 200ms, {199ms}, {0ms}},
      {"first at a later start", 300ms, 200ms, {299ms, 1ms, 199ms, 1ms}, {300ms, 500ms}},
      {"missed ones run once, then on the grid",
       0ms,
       200ms,
       {1100ms, 99ms, 1ms},
       {0ms, 1100ms, 1200ms}},
      {"missed up to a point of the grid", 0ms, 200ms, {1000ms, 199ms, 1ms}, {0ms, 1000ms, 1200ms}},
      {"on the grid of a start long past", -350ms, 200ms, {49ms, 1ms, 200ms}, {0ms, 50ms, 250ms}},
      {"after 30 s of standstill", 0ms, 200ms, {30100ms, 100ms}, {0ms, 30100ms, 30200ms}},
  };
  for (const TimedCall& timedCall : cases) {
    SCOPED_TRACE(timedCall.mName);
    const auto begin = mClock->Now();
    SleepingWorker worker("worker", mClock);
    std::vector<std::chrono::milliseconds> runsAt;
    const auto record = [&] {
      runsAt.push_back(
          std::chrono::duration_cast<std::chrono::milliseconds>(mClock->Now() - begin));
    };
    worker.AddCall(record, begin + timedCall.mStart, timedCall.mPeriod);
    worker.Start();
    worker.Sync();
    for (const auto step : timedCall.mSteps) {
      mClock->Advance(step);
      worker.Sync();
    }
    EXPECT_THAT(runsAt, ElementsAreArray(timedCall.mRunsAt));
  }
}

TEST_F(AWorker, SkipsThePeriodsThatARunTakes) {
  const struct {
    std::chrono::milliseconds mRunTakes;
    std::chrono::milliseconds mNextRun;
  } cases[] = {{0ms, 200ms}, {150ms, 200ms}, {200ms, 200ms}, {201ms, 400ms}, {1050ms, 1200ms}};
  for (const auto& [runTakes, nextRun] : cases) {
    SCOPED_TRACE(runTakes.count());
    const auto begin = mClock->Now();
    SleepingWorker worker("worker", mClock);
    int runs = 0;
    worker.AddCall([&, takes = runTakes] { mClock->Advance(++runs == 1 ? takes : 0ms); }, begin,
                   200ms);
    worker.Start();
    worker.Sync();
    // Once more, for what became due by the run itself.
    worker.Sync();
    if (runTakes < nextRun) {
      mClock->Advance(begin + nextRun - 1ms - mClock->Now());
      worker.Sync();
      EXPECT_EQ(runs, 1);
      mClock->Advance(1ms);
      worker.Sync();
    }
    EXPECT_EQ(runs, 2);
  }
}

TEST_F(AWorker, TellsThroughTheHandleThatACallHasRun) {
  mWorker->Start();
  const auto once = mWorker->AddCall(Record("once"), mBegin + 1s, 0ns);
  const auto repeated = mWorker->AddCall(Record("repeated"), mBegin + 1s, 1s);
  const auto failing = mWorker->AddCall([] { throw 1; }, mBegin + 1s, 0ns);
  mWorker->Sync();
  for (const auto& handle : {once, repeated, failing}) {
    EXPECT_FALSE(handle->HasRun());
  }
  AdvanceAndSync(1s);
  for (const auto& handle : {once, repeated, failing}) {
    EXPECT_TRUE(handle->HasRun());
  }
}

TEST_F(AWorker, GoesOnWithACallWhoseHandleIsReleased) {
  mWorker->Start();
  mWorker->AddCall(Record("run"), mBegin + 1s, 1s).reset();
  mWorker->Sync();
  AdvanceAndSync(1s);
  AdvanceAndSync(1s);
  EXPECT_THAT(mRuns, ElementsAre("run", "run"));
}

TEST_F(AWorker, NeverStartsACancelledCall) {
  mWorker->Start();
  const auto once = mWorker->AddCall(Record("once"), mBegin + 1s, 0ns);
  const auto repeated = mWorker->AddCall(Record("repeated"), mBegin + 1s, 1s);
  const auto kept = mWorker->AddCall(Record("kept"), mBegin + 1s, 0ns);
  once->Cancel();
  once->Cancel();
  AdvanceAndSync(1s);
  repeated->Cancel();
  kept->Cancel();
  AdvanceAndSync(5s);
  EXPECT_THAT(mRuns, ElementsAre("repeated", "kept"));
  EXPECT_FALSE(once->HasRun());

  mWorker.reset();
  repeated->Cancel();
}

TEST_F(AWorker, EndsARepeatedCallThatCancelsItself) {
  WorkerCallHandle handle;
  handle = mWorker->AddCall(
      [&] {
        mRuns.push_back("run");
        handle->Cancel();
      },
      mBegin, 1s);
  mWorker->Start();
  mWorker->Sync();
  AdvanceAndSync(5s);
  EXPECT_THAT(mRuns, ElementsAre("run"));
}

TEST_F(AWorker, DoesNotWaitWhenARunningCallIsCancelled) {
  std::promise<void> running;
  std::promise<void> cancelled;
  mWorker->Start();
  const auto handle = mWorker->AddCall(
      [&] {
        running.set_value();
        cancelled.get_future().wait();
      },
      mBegin, 1s);
  running.get_future().wait();
  handle->Cancel();
  cancelled.set_value();
  mWorker->Sync();
  AdvanceAndSync(5s);
  EXPECT_TRUE(handle->HasRun());
  EXPECT_TRUE(mLog.Lines().empty()) << "the call ran again and failed on its promise";
}

TEST_F(AWorker, LogsTheTextOfACallThatThrowsAndGoesOn) {
  mWorker->NonBlockingCall([] { throw std::runtime_error("no such lamp"); });
  mWorker->NonBlockingCall([] { throw 42; });
  mWorker->NonBlockingCall(CWorker::Call());
  mWorker->AddCall([] { throw std::logic_error("each second"); }, mBegin + 1s, 1s);
  mWorker->NonBlockingCall(Record("next"));
  mWorker->Start();
  mWorker->Sync();
  EXPECT_THAT(mRuns, ElementsAre("next"));
  AdvanceAndSync(1s);
  AdvanceAndSync(1s);

  const auto lines = mLog.Lines();
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0],
            (LogCapture::Line{Log::ELogLevel::EError, "Worker call failed: no such lamp"}));
  EXPECT_EQ(lines[1].mText, "Worker call failed: unknown exception");
  EXPECT_EQ(mLog.Count(Log::ELogLevel::EError, "Worker call failed: each second"), 2u);
}

TEST_F(AWorker, ReturnsFromABlockingCallWhenItHasRun) {
  mWorker->Start();
  mWorker->NonBlockingCall(Record("queued"));
  mWorker->BlockingCall(Record("blocking"));
  EXPECT_THAT(mRuns, ElementsAre("queued", "blocking"));
}

TEST_F(AWorker, PassesOnTheExceptionOfABlockingCall) {
  mWorker->Start();
  EXPECT_THROW(mWorker->BlockingCall([] { throw std::out_of_range("far"); }), std::out_of_range);
  auto broken = std::promise<void>().get_future();
  EXPECT_THROW(mWorker->BlockingCall([&] { broken.get(); }), std::future_error);
  EXPECT_TRUE(mLog.Lines().empty());
  EXPECT_TRUE(mWorker->IsRunning());
}

TEST_F(AWorker, RunsBlockingCallsOfItsOwnThreadDirectly) {
  mWorker->NonBlockingCall([&] {
    mWorker->NonBlockingCall(Record("queued"));
    mWorker->BlockingCall(Record("blocking"));
    mWorker->Sync();
    mRuns.push_back(mWorker->IsThisThread() ? "own thread" : "another thread");
  });
  mWorker->Start();
  mWorker->Sync();
  mWorker->Sync();
  EXPECT_THAT(mRuns, ElementsAre("blocking", "own thread", "queued"));
  EXPECT_FALSE(mWorker->IsThisThread());
}

TEST_F(AWorker, SyncDoesNotWaitForCallsPostedAfterIt) {
  std::function<void()> chain = [&] { mWorker->NonBlockingCall(chain); };
  mWorker->NonBlockingCall(chain);
  mWorker->Start();
  mWorker->Sync();
  mWorker->Stop();
}

TEST_F(AWorker, SleepsOnItsClockUntilTheDurationIsOver) {
  mWorker->Start();
  std::atomic<bool> woken{false};
  mWorker->NonBlockingCall([&] {
    mRuns.push_back(mWorker->Sleep(2s) ? "slept" : "cut short");
    woken = true;
  });
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 2s));
  mClock->Advance(1999ms);
  mWorker->NonBlockingCall(Record("posted meanwhile"));
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 2s));
  EXPECT_FALSE(woken);
  AdvanceAndSync(1ms);
  EXPECT_THAT(mRuns, ElementsAre("slept", "posted meanwhile"));
}

TEST_F(AWorker, NamesItsThreadAndTakesNoSignalOfTheProcess) {
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  SleepingWorker worker("brightness control", mClock);
  worker.Start();
  std::array<char, 16> name{};
  sigset_t signals;
  worker.BlockingCall([&] {
    pthread_getname_np(pthread_self(), name.data(), name.size());
    pthread_sigmask(SIG_SETMASK, nullptr, &signals);
  });
  EXPECT_STREQ(name.data(), "brightness cont");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGALRM, SIGUSR1, SIGPIPE}) {
    EXPECT_EQ(sigismember(&signals, signal), 1) << signal;
  }
  EXPECT_EQ(sigismember(&signals, SIGSEGV), 0);
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&after, SIGINT), sigismember(&before, SIGINT));
}

TEST_F(AWorker, KeepsTheOrderOfEachOfManyPosters) {
  constexpr int kPosters = 4;
  constexpr int kCalls = 1000;
  std::array<std::vector<int>, kPosters> seen;
  std::atomic<int> cancelledRuns{0};
  mWorker->Start();
  std::vector<std::thread> posters;
  for (size_t poster = 0; poster < kPosters; ++poster) {
    posters.emplace_back([&, poster] {
      for (int call = 0; call < kCalls; ++call) {
        mWorker->NonBlockingCall([&, poster, call] { seen[poster].push_back(call); });
        mWorker->AddCall([&] { ++cancelledRuns; }, mBegin + 1s, 1s)->Cancel();
        if (call % 100 == 0) {
          mWorker->BlockingCall([] {});
        }
      }
    });
  }
  for (auto& poster : posters) {
    poster.join();
  }
  AdvanceAndSync(2s);
  for (const auto& calls : seen) {
    EXPECT_EQ(calls.size(), static_cast<size_t>(kCalls));
    EXPECT_TRUE(std::ranges::is_sorted(calls));
  }
  EXPECT_EQ(cancelledRuns, 0);
}

TEST(AWorkerOnTheMachinesClock, RunsATimedCallNotBeforeItsTime) {
  CWorker worker;
  worker.Start();
  const auto due = worker.Now() + 30ms;
  std::promise<CWorker::TimePoint> ran;
  worker.AddCall([&] { ran.set_value(worker.Now()); }, due, 0ns);
  EXPECT_GE(ran.get_future().get(), due);
}

}  // namespace
