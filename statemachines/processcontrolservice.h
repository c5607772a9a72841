// The process as the board controller holds it: requests come in, reports go out.
#pragma once

#include <functional>
#include <mutex>

#include "platform/rpc/interfaces/genericcontrol.h"
#include "statemachines/iprocesscontrol.h"

// Threads: any.
class CProcessControlService : public IGenericControl, public IProcessControl {
 public:
  using RequestHandler = std::function<ipc::MResult()>;

  // Who answers the requests.
  void ConnectRequests(RequestHandler enable, RequestHandler disable);

  // Both wait for the answer, however long it takes, pass on what its handler throws, and throw
  // std::bad_function_call without a handler.
  ipc::MResult Enable() override;
  ipc::MResult Disable() override;

  void ReportState(const ipc::MState& state) override;
  void SendAlive() override;

 private:
  ipc::MResult Ask(const RequestHandler& handler) const;

  mutable std::mutex mMutex;
  // Guarded by mMutex.
  RequestHandler mEnable;
  RequestHandler mDisable;
};
