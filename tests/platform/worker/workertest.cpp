#include <pthread.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "tests/platform/worker/workerfixture.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using testing::ElementsAre;

using AWorker = WorkerFixture;

TEST_F(AWorker, RunsCallsByDueTimeAndThenInTheOrderOfPosting) {
  mWorker->AddCall(Record("2 s"), mBegin + 2s, 0ns);
  mWorker->NonBlockingCall(Record("now, first"));
  mWorker->AddCall(Record("1 s, first"), mBegin + 1s, 0ns);
  mWorker->AddCall(Record("1 s, second"), mBegin + 1s, 0ns);
  mWorker->AddCall(Record("now, second"), mBegin, 0ns);
  mWorker->AddCall(Record("overdue"), mBegin - 1s, 0ns);
  StartAndSync();
  AdvanceAndSync(3s);
  EXPECT_THAT(mRuns, ElementsAre("overdue", "now, first", "now, second", "1 s, first",
                                 "1 s, second", "2 s"));
}

TEST_F(AWorker, RunsATimedCallAtItsStartAndOnceAPeriodWithoutCatchingUp) {
  const struct {
    const char* mName;
    milliseconds mStart;
    milliseconds mPeriod;
    std::vector<milliseconds> mSteps;
    std::vector<milliseconds> mRunsAt;
    milliseconds mFirstRunTakes = 0ms;
  } cases[] = {
      {"once, at its point and not before", 1000ms, 0ms, {999ms, 1ms, 5000ms}, {1000ms}},
      {"once, at once where the point has passed", -500ms, 0ms, {1000ms}, {0ms}},
      {"a negative period is no period", 0ms, -200ms, {200ms, 200ms}, {0ms}},
      {"each period, from its start", 300ms, 200ms, {299ms, 1ms, 199ms, 1ms}, {300ms, 500ms}},
      {"missed: once, then on the grid", 0ms, 200ms, {1100ms, 99ms, 1ms}, {0ms, 1100ms, 1200ms}},
      {"missed up to the grid", 0ms, 200ms, {1000ms, 199ms, 1ms}, {0ms, 1000ms, 1200ms}},
      {"on the grid of a start long past", -350ms, 200ms, {49ms, 1ms, 200ms}, {0ms, 50ms, 250ms}},
      {"a run within its period", 0ms, 200ms, {49ms, 1ms}, {0ms, 200ms}, 150ms},
      {"a run as long as its period", 0ms, 200ms, {}, {0ms, 200ms}, 200ms},
      {"a run longer than its period", 0ms, 200ms, {198ms, 1ms}, {0ms, 400ms}, 201ms},
  };
  for (const auto& timed : cases) {
    SCOPED_TRACE(timed.mName);
    const auto begin = mClock->Now();
    std::vector<milliseconds> runsAt;
    const auto run = [&] {
      runsAt.push_back(std::chrono::duration_cast<milliseconds>(mClock->Now() - begin));
      mClock->Advance(runsAt.size() == 1 ? timed.mFirstRunTakes : 0ms);
    };
    mWorker = std::make_unique<SleepingWorker>("worker", mClock);
    mWorker->AddCall(run, begin + timed.mStart, timed.mPeriod);
    StartAndSync();
    // Once more, for what became due by the run itself.
    mWorker->Sync();
    for (const auto step : timed.mSteps) {
      AdvanceAndSync(step);
    }
    mWorker->Stop();
    EXPECT_EQ(runsAt, timed.mRunsAt);
  }
}

TEST_F(AWorker, NeverStartsACancelledCall) {
  const auto once = mWorker->AddCall(Record("once"), mBegin + 1s, 0ns);
  const auto repeated = mWorker->AddCall(Record("repeated"), mBegin + 1s, 1s);
  once->Cancel();
  once->Cancel();
  StartAndSync();
  AdvanceAndSync(1s);
  repeated->Cancel();
  AdvanceAndSync(5s);
  EXPECT_THAT(mRuns, ElementsAre("repeated"));
  EXPECT_FALSE(once->HasRun());
  EXPECT_TRUE(repeated->HasRun());

  mWorker.reset();
  repeated->Cancel();
}

TEST_F(AWorker, EndsARepeatedCallThatIsCancelledWhileItRunsWithoutWaitingForIt) {
  std::promise<void> running;
  std::promise<void> cancelled;
  WorkerCallHandle byItself;
  byItself = mWorker->AddCall(
      [&] {
        mRuns.push_back("itself");
        byItself->Cancel();
      },
      mBegin, 1s);
  const auto byAnother = mWorker->AddCall(
      [&] {
        mRuns.push_back("another");
        running.set_value();
        cancelled.get_future().wait();
      },
      mBegin, 1s);
  mWorker->Start();
  running.get_future().wait();
  byAnother->Cancel();
  cancelled.set_value();
  mWorker->Sync();
  AdvanceAndSync(5s);
  EXPECT_THAT(mRuns, ElementsAre("itself", "another"));
}

TEST_F(AWorker, LogsTheTextOfACallThatThrowsAndGoesOn) {
  mWorker->NonBlockingCall([] { throw std::runtime_error("no such lamp"); });
  mWorker->NonBlockingCall([] { throw 42; });
  mWorker->NonBlockingCall(CWorker::Call());
  mWorker->AddCall([] { throw std::logic_error("each second"); }, mBegin + 1s, 1s);
  StartAndSync();
  AdvanceAndSync(1s);
  AdvanceAndSync(1s);

  const auto lines = mLog.Lines();
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0],
            (LogCapture::Line{Log::ELogLevel::EError, "Worker call failed: no such lamp"}));
  EXPECT_EQ(lines[1].mText, "Worker call failed: unknown exception");
  EXPECT_EQ(lines[4].mText, "Worker call failed: each second");
}

TEST_F(AWorker, ReturnsFromABlockingCallWhenItHasRunAndPassesItsExceptionOn) {
  EXPECT_THROW(mWorker->BlockingCall(Record("not started")), std::runtime_error);
  mWorker->NonBlockingCall(Record("queued"));
  mWorker->Start();
  mWorker->BlockingCall(Record("blocking"));
  EXPECT_THAT(mRuns, ElementsAre("queued", "blocking"));
  EXPECT_THROW(mWorker->BlockingCall([] { throw std::out_of_range("far"); }), std::out_of_range);
  // A broken promise inside the call is not one of the worker's own.
  auto broken = std::promise<void>().get_future();
  EXPECT_THROW(mWorker->BlockingCall([&] { broken.get(); }), std::future_error);
  EXPECT_TRUE(mLog.Lines().empty());
}

TEST_F(AWorker, RunsBlockingCallsOfItsOwnThreadDirectly) {
  mWorker->NonBlockingCall([&] {
    mWorker->NonBlockingCall(Record("queued"));
    mWorker->BlockingCall(Record("blocking"));
    mWorker->Sync();
    mRuns.push_back(mWorker->IsThisThread() ? "own thread" : "another thread");
  });
  StartAndSync();
  mWorker->Sync();
  EXPECT_THAT(mRuns, ElementsAre("blocking", "own thread", "queued"));
  EXPECT_FALSE(mWorker->IsThisThread());
}

TEST_F(AWorker, SyncDoesNotWaitForCallsPostedAfterIt) {
  std::function<void()> chain = [&] { mWorker->NonBlockingCall(chain); };
  mWorker->NonBlockingCall(chain);
  StartAndSync();
  mWorker->Stop();
}

TEST_F(AWorker, SleepsOnItsClockUntilTheDurationIsOverOrTheWorkerEnds) {
  mWorker->NonBlockingCall([&] {
    mRuns.push_back(mWorker->Sleep(2s) && mClock->Now() == mBegin + 2s ? "slept" : "woken early");
  });
  mWorker->Start();
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 2s));
  mClock->Advance(1999ms);
  // Wakes the sleeper, as whatever is due first does.
  mWorker->AddCall([&] { mRuns.push_back(mWorker->Sleep(1h) ? "slept" : "cut short"); }, mBegin,
                   0ns);
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 2s));
  mClock->Advance(1ms);
  ASSERT_TRUE(mClock->WaitForWaiter(mBegin + 2s + 1h));
  mWorker->Stop();
  EXPECT_THAT(mRuns, ElementsAre("slept", "cut short"));
}

TEST_F(AWorker, NamesItsThreadAndTakesNoSignalOfTheProcess) {
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
  pthread_sigmask(SIG_SETMASK, nullptr, &signals);
  EXPECT_EQ(sigismember(&signals, SIGINT), 0) << "the starting thread takes signals as before";
}

TEST_F(AWorker, KeepsTheOrderOfEachOfManyPosters) {
  constexpr int kCalls = 1000;
  std::array<std::vector<int>, 4> seen;
  mWorker->Start();
  std::vector<std::jthread> posters;
  for (auto& ran : seen) {
    posters.emplace_back([&] {
      for (int call = 0; call < kCalls; ++call) {
        mWorker->NonBlockingCall([&, call] { ran.push_back(call); });
        mWorker->AddCall(Record("cancelled"), mBegin + 1s, 1s)->Cancel();
        if (call % 100 == 0) {
          mWorker->BlockingCall([] {});
        }
      }
    });
  }
  posters.clear();
  AdvanceAndSync(2s);
  for (const auto& ran : seen) {
    EXPECT_EQ(ran.size(), static_cast<size_t>(kCalls));
    EXPECT_TRUE(std::ranges::is_sorted(ran));
  }
  EXPECT_THAT(mRuns, ElementsAre());
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
