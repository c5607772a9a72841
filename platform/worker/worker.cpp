#include "platform/worker/worker.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "platform/worker/postedcall.h"
#include "platform/worker/workerthread.h"

CWorker::CWorker(std::string name, std::shared_ptr<ISteadyClock> clock)
    : mThread(std::make_shared<CWorkerThread>(std::move(name), std::move(clock))) {}

CWorker::~CWorker() {
  mThread->Stop();
  if (mThread->IsThisThread()) {
    mThread->Detach();
  }
}

void CWorker::Start() {
  mThread->Start();
}

void CWorker::Stop() {
  mThread->Stop();
}

void CWorker::Sync() {
  if (!IsThisThread()) {
    mThread->RunAndWait([] {});
  }
}

bool CWorker::IsRunning() const {
  return mThread->IsRunning();
}

bool CWorker::IsThisThread() const {
  return mThread->IsThisThread();
}

void CWorker::EmergencyKill() {
  mThread->Kill();
}

void CWorker::NonBlockingCall(Call call) {
  mThread->Post(std::move(call), std::nullopt, std::chrono::nanoseconds::zero());
}

void CWorker::BlockingCall(const Call& call) {
  if (IsThisThread()) {
    call();
  } else if (!mThread->RunAndWait(call)) {
    throw std::runtime_error("The worker does not run or ended before the call's turn");
  }
}

WorkerCallHandle CWorker::AddCall(Call call, TimePoint start, std::chrono::nanoseconds period) {
  return mThread->Post(std::move(call), start, period);
}

CWorker::TimePoint CWorker::Now() const {
  return mThread->Now();
}

bool CWorker::Sleep(std::chrono::nanoseconds duration) {
  return mThread->Sleep(duration);
}
