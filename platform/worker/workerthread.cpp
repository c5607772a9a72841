#include "platform/worker/workerthread.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <exception>
#include <future>
#include <utility>

#include "platform/log/log.h"
#include "platform/worker/postedcall.h"

namespace {

using namespace std::chrono_literals;

constexpr size_t kThreadNameLimit = 15;

thread_local const CWorkerThread* tCurrent = nullptr;

// A thread inherits the mask of its creator, so that blocking around the creation leaves no moment
// in which the new thread could take a signal. Faults stay with the thread that causes them.
class CSignalsBlocked {
 public:
  CSignalsBlocked() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
      sigdelset(&signals, fault);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &mPrevious);
  }
  ~CSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr); }
  CSignalsBlocked(const CSignalsBlocked&) = delete;
  CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;

 private:
  sigset_t mPrevious;
};

void RunLogged(CPostedCall& call) {
  try {
    call.mCall();
  } catch (const std::exception& exception) {
    LOG(Error, "Worker call failed: {}", exception.what());
  } catch (...) {
    LOG(Error, "Worker call failed: unknown exception");
  }
  call.mHasRun = true;
}

// The first point of the period's grid that is after the run's start and not before its end: a
// point that passed while the call was late or busy is skipped.
CWorkerThread::TimePoint NextDue(CWorkerThread::TimePoint due, std::chrono::nanoseconds period,
                                 CWorkerThread::TimePoint start, CWorkerThread::TimePoint end) {
  // However long ago the first point was, and however far the next one: no step beyond the clock.
  constexpr auto kFar = std::chrono::hours(24 * 365 * 50);
  period = std::min<std::chrono::nanoseconds>(period, kFar);
  due = std::max(due, start - kFar);
  const auto afterStart = (start - due) / period + 1;
  const auto notBeforeEnd = (end - due + period - 1ns) / period;
  return due + std::max(afterStart, notBeforeEnd) * period;
}

}  // namespace

CWorkerThread::CWorkerThread(std::string name, std::shared_ptr<ISteadyClock> clock)
    : mName(std::move(name)), mClock(std::move(clock)) {}

void CWorkerThread::Start() {
  if (IsThisThread()) {
    return;
  }
  const std::lock_guard threadLock(mThreadMutex);
  if (IsRunning()) {
    return;
  }
  if (mThread.joinable()) {
    mThread.join();
  }
  const Lock lock(mMutex);
  const CSignalsBlocked blocked;
  mThread = std::thread([self = shared_from_this()] { self->Run(); });
  mActive = true;
}

void CWorkerThread::Stop() {
  if (IsThisThread()) {
    AskForEnd();
    return;
  }
  {
    const std::lock_guard threadLock(mThreadMutex);
    AskForEnd();
    if (mThread.joinable()) {
      mThread.join();
    }
  }
  DropQueue(Lock(mMutex));
}

void CWorkerThread::Kill() {
  AskForEnd();
  DropQueue(Lock(mMutex));
}

void CWorkerThread::Detach() {
  if (mThread.joinable()) {
    mThread.detach();
  }
}

bool CWorkerThread::IsRunning() const {
  const Lock lock(mMutex);
  return mActive;
}

bool CWorkerThread::IsThisThread() const {
  return tCurrent == this;
}

CWorkerThread::PostedCall CWorkerThread::Post(Call call, std::optional<TimePoint> due,
                                              std::chrono::nanoseconds period) {
  auto posted = std::make_shared<CPostedCall>(weak_from_this(), std::move(call), period);
  const Lock lock(mMutex);
  Insert(posted, due.value_or(mClock->Now()));
  return posted;
}

void CWorkerThread::Cancel(CPostedCall& call) {
  Call released;
  const Lock lock(mMutex);
  call.mCancelled = true;
  if (call.mPosition) {
    mQueue.erase(*call.mPosition);
    call.mPosition.reset();
    released.swap(call.mCall);
  }
}

bool CWorkerThread::RunAndWait(const Call& call) {
  bool ran = false;
  std::future<void> done;
  {
    auto task = std::make_shared<std::packaged_task<void()>>([&call, &ran] {
      ran = true;
      call();
    });
    done = task->get_future();
    auto posted = std::make_shared<CPostedCall>(
        weak_from_this(), [task = std::move(task)] { (*task)(); }, 0ns);
    const Lock lock(mMutex);
    if (!mActive) {
      return false;
    }
    Insert(posted, mClock->Now());
  }
  try {
    done.get();
  } catch (const std::future_error&) {
    if (ran) {
      throw;
    }
  }
  return ran;
}

bool CWorkerThread::Sleep(std::chrono::nanoseconds duration) {
  Lock lock(mMutex);
  const TimePoint end = mClock->Now() + duration;
  while (mActive && mClock->Now() < end) {
    mClock->WaitUntil(mChanged, lock, end);
  }
  return mActive;
}

void CWorkerThread::Run() {
  tCurrent = this;
  pthread_setname_np(pthread_self(), mName.substr(0, kThreadNameLimit).c_str());
  Lock lock(mMutex);
  while (mActive) {
    if (mQueue.empty()) {
      mChanged.wait(lock);
      continue;
    }
    const TimePoint now = mClock->Now();
    const TimePoint due = mQueue.begin()->first;
    if (due <= now) {
      RunFirst(lock, now);
    } else {
      mClock->WaitUntil(mChanged, lock, due);
    }
  }
  DropQueue(std::move(lock));
}

void CWorkerThread::RunFirst(Lock& lock, TimePoint now) {
  const auto first = mQueue.begin();
  const TimePoint due = first->first;
  const PostedCall call = std::move(first->second);
  mQueue.erase(first);
  call->mPosition.reset();

  lock.unlock();
  RunLogged(*call);
  lock.lock();
  if (call->IsRepeated() && !call->mCancelled) {
    Insert(call, NextDue(due, call->mPeriod, now, mClock->Now()));
    return;
  }
  lock.unlock();
  call->mCall = nullptr;
  lock.lock();
}

void CWorkerThread::Insert(const PostedCall& call, TimePoint due) {
  call->mPosition = mQueue.emplace(due, call);
  if (*call->mPosition == mQueue.begin()) {
    mChanged.notify_all();
  }
}

void CWorkerThread::AskForEnd() {
  const Lock lock(mMutex);
  mActive = false;
  mChanged.notify_all();
}

void CWorkerThread::DropQueue(Lock lock) {
  Queue dropped;
  dropped.swap(mQueue);
  for (const auto& [due, call] : dropped) {
    call->mPosition.reset();
  }
  lock.unlock();
  for (const auto& [due, call] : dropped) {
    call->mCall = nullptr;
  }
}
