// A worker on a clock in the test's hand, with its log captured.
#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/worker/worker.h"
#include "tests/support/logcapture.h"
#include "tests/support/manualclock.h"

class SleepingWorker : public CWorker {
 public:
  using CWorker::CWorker;
  using CWorker::Sleep;
  ~SleepingWorker() override { Stop(); }
};

class WorkerFixture : public testing::Test {
 protected:
  CWorker::Call Record(const std::string& name) {
    return [this, name] { mRuns.push_back(name); };
  }

  void StartAndSync() {
    mWorker->Start();
    mWorker->Sync();
  }

  void AdvanceAndSync(std::chrono::nanoseconds duration) {
    mClock->Advance(duration);
    mWorker->Sync();
  }

  LogCapture mLog;
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  const ISteadyClock::TimePoint mBegin = mClock->Now();
  // What ran, in order; written on the worker, read after Sync or Stop.
  std::vector<std::string> mRuns;
  std::unique_ptr<SleepingWorker> mWorker = std::make_unique<SleepingWorker>("worker", mClock);
};
