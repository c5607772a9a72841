// A call in a worker's queue, and its handle.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "platform/worker/worker.h"
#include "platform/worker/workerthread.h"

class CPostedCall : public CWorkerCall {
 public:
  CPostedCall(std::weak_ptr<CWorkerThread> thread, CWorkerThread::Call call,
              std::chrono::nanoseconds period)
      : mPeriod(period), mCall(std::move(call)), mThread(std::move(thread)) {}

  bool HasRun() const override { return mHasRun; }

  void Cancel() override {
    if (const auto thread = mThread.lock()) {
      thread->Cancel(*this);
    }
  }

  bool IsRepeated() const { return mPeriod > std::chrono::nanoseconds::zero(); }

  const std::chrono::nanoseconds mPeriod;

  // Belongs to whoever took the call out of the queue, released without a lock: what it holds may
  // use the worker as it goes.
  CWorkerThread::Call mCall;
  std::atomic<bool> mHasRun{false};

  // Guarded by the worker's lock.
  std::optional<CWorkerThread::Queue::iterator> mPosition;  // only while queued
  bool mCancelled = false;

 private:
  const std::weak_ptr<CWorkerThread> mThread;
};
