// The alive reports of a process.
#pragma once

#include <chrono>
#include <functional>

#include "platform/worker/worker.h"

// Adds the alive timer to the action handler that derives from it; the reports go out on the
// handler's own worker.
template <typename Handler>
class CHsmAlive : public virtual Handler, public virtual CWorker {
 public:
  // The first report goes out at once, the next ones each 4 s later.
  void IntStartAliveTimer() override {
    mAliveCall = AddCall([this] { SendAlive(); }, Now(), std::chrono::seconds(4));
  }

  // Does not wait for a report that is on its way.
  void IntStopAliveTimer() override {
    if (mAliveCall) {
      mAliveCall->Cancel();
      mAliveCall.reset();
    }
  }

  // Sends one report. Set before the machine runs.
  std::function<void()> ExtSendAlive;

 protected:
  // Asked before each report, on the worker.
  virtual bool IsAlive() const { return true; }

 private:
  void SendAlive() {
    if (IsAlive()) {
      ExtSendAlive();
    }
  }

  WorkerCallHandle mAliveCall;  // the machine's thread only
};
