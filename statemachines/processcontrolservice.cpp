#include "statemachines/processcontrolservice.h"

#include <utility>

void CProcessControlService::ConnectRequests(RequestHandler enable, RequestHandler disable) {
  const std::lock_guard lock(mMutex);
  mEnable = std::move(enable);
  mDisable = std::move(disable);
}

ipc::MResult CProcessControlService::Enable() {
  return Ask(mEnable);
}

ipc::MResult CProcessControlService::Disable() {
  return Ask(mDisable);
}

// Without the lock: the answer may take long, and several may be asked for at once.
ipc::MResult CProcessControlService::Ask(const RequestHandler& handler) const {
  RequestHandler present;
  {
    const std::lock_guard lock(mMutex);
    present = handler;
  }
  return present();
}

void CProcessControlService::ReportState(const ipc::MState& state) {
  if (mStateReporter) {
    mStateReporter(state);
  }
}

void CProcessControlService::SendAlive() {
  mAliveReporter();
}
