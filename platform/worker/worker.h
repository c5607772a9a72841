// One thread with an ordered queue of immediate and timed calls.
//
// Calls run in the order of their due time, at equal times in the order of posting.
//
// Contract of timed calls: the first run is at the start point (at once where that has passed), the
// next ones each a period later; a period of 0 means once. A period that was missed is skipped,
// never made up for in a burst. Nothing wakes while nothing is due.
//
// A call that throws is logged at error level with its text, and the worker goes on. A call and all
// that it holds are released as soon as it cannot run again.
//
// The thread takes no signal that another thread could take.
//
// Threads: every operation may be called from any thread. A class that is its own worker (derives
// from CWorker) calls Stop in its own destructor, before its members go.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/worker/steadyclock.h"

// A timed call as its poster holds it. Releasing the handle leaves the call as it is.
class CWorkerCall {
 public:
  virtual ~CWorkerCall() = default;

  // True once the call has run (for a repeated call: at least once).
  virtual bool HasRun() const = 0;

  // A cancelled call never starts again. Does not wait for a run that is under way on another
  // thread. Harmless when repeated, after the run, and after the worker is gone.
  virtual void Cancel() = 0;
};

class CWorkerThread;

using WorkerCallHandle = std::shared_ptr<CWorkerCall>;

class CWorker {
 public:
  using Call = std::function<void()>;
  using TimePoint = ISteadyClock::TimePoint;

  // The name is the thread's name in the log and in ps (15 characters at most are kept).
  explicit CWorker(std::string name = "worker",
                   std::shared_ptr<ISteadyClock> clock = SystemSteadyClock());
  virtual ~CWorker();
  CWorker(const CWorker&) = delete;
  CWorker& operator=(const CWorker&) = delete;

  // Starts the thread. Calls queued before that run now. A second Start does nothing; one after a
  // Stop starts again (not from the worker's own thread, and what is posted between a Stop from
  // there and the thread's end is dropped).
  virtual void Start();

  // Lets the running call end, joins the thread and drops what is still queued. From the worker's
  // own thread it only asks for the end; the join is left to the next Stop or the destructor.
  virtual void Stop();

  // Returns when everything that was due when it was called has run; at once when the worker does
  // not run or on the worker's own thread.
  virtual void Sync();

  // From Start until the end is asked for; a long call may look at it to end early.
  virtual bool IsRunning() const;
  virtual bool IsThisThread() const;

  // Drops everything that is queued and asks the thread to end, without waiting for it.
  virtual void EmergencyKill();

  // Queues a call behind those that are due already and returns.
  virtual void NonBlockingCall(Call call);

  // As NonBlockingCall, and returns when the call has run; runs it directly on the worker's own
  // thread. Passes the call's exception on. Throws std::runtime_error where the worker does not run
  // or ends before the call's turn.
  virtual void BlockingCall(const Call& call);

  // Runs the call at the start point and then every period (0: once).
  WorkerCallHandle AddCall(Call call, TimePoint start, std::chrono::nanoseconds period);

  // The time on the worker's clock: what start points are counted from.
  TimePoint Now() const;

 protected:
  // For calls that run on this worker: waits for the duration; the end of the worker cuts it short.
  // False when it was cut short.
  bool Sleep(std::chrono::nanoseconds duration);

 private:
  // Shared with the thread and the handles, which may outlive this object.
  const std::shared_ptr<CWorkerThread> mThread;
};
