// Generic control: how the board controller enables, disables and watches a process.
#pragma once

#include <functional>
#include <utility>

#include "platform/ipc/genericcontrol.pb.h"

// At the serving end the process implements the two requests, and the RPC layer connects the
// reporters that carry state and alive messages to all watchers. At the calling end the requests go
// over the wire, and the owner connects the reporters to hear what the process reports.
//
// Threads: requests arrive on any of the RPC layer's threads at once. Reporters connected at the
// calling end run on the notification thread.
class IGenericControl {
 public:
  using StateReporter = std::function<void(const ipc::MState&)>;
  using AliveReporter = std::function<void()>;

  virtual ~IGenericControl() = default;

  // Both throw Rpc::CommunicationException at the calling end when the process cannot be reached.
  virtual ipc::MResult Enable() = 0;
  virtual ipc::MResult Disable() = 0;

  // Calls the state reporter; does nothing when there is none.
  virtual void ReportState(const ipc::MState& state) = 0;

  // Calls the alive reporter; throws std::bad_function_call when there is none.
  virtual void SendAlive() = 0;

  // Connected once, before anything is served or, at the calling end, before notifications are
  // handled; there it begins the two subscriptions.
  virtual void ConnectReporters(StateReporter stateReporter, AliveReporter aliveReporter) {
    mStateReporter = std::move(stateReporter);
    mAliveReporter = std::move(aliveReporter);
  }

 protected:
  StateReporter mStateReporter;
  AliveReporter mAliveReporter;
};
