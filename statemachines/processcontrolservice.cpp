#include "statemachines/processcontrolservice.h"

#include <utility>

void CProcessControlService::ConnectRequests(RequestHandler enable, RequestHandler disable) {
  mEnable = std::move(enable);
  mDisable = std::move(disable);
}

ipc::MResult CProcessControlService::Enable() {
  return mEnable();
}

ipc::MResult CProcessControlService::Disable() {
  return mDisable();
}

void CProcessControlService::ReportState(const ipc::MState& state) {
  if (mStateReporter) {
    mStateReporter(state);
  }
}

void CProcessControlService::SendAlive() {
  mAliveReporter();
}
