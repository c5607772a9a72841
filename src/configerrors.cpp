#include "src/configerrors.h"

#include <utility>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "platform/diagnostics/diagnosticssignal.h"
#include "platform/log/log.h"
#include "platform/rpc/communicationexception.h"
#include "statemachines/feedbackhsmevents.h"
#include "utils/signalcatalogue.h"

void CConfigErrors::SetMachine(std::weak_ptr<IHsmInterface> machine) {
  const std::lock_guard lock(mMutex);
  mMachine = std::move(machine);
}

void CConfigErrors::Handle(const std::string& error) {
  LOG(Error, "(src/feedback:105) Config error occurred: {}", error);
  {
    const std::lock_guard lock(mMutex);
    if (!CDiagnosticsCommClient::IsInitialized()) {
      mPending = true;
      return;
    }
  }
  Report();
}

void CConfigErrors::ReportPending() const {
  {
    const std::lock_guard lock(mMutex);
    if (!mPending) {
      return;
    }
  }
  Report();
}

void CConfigErrors::Report() const {
  try {
    CDiagnosticsSignal<bool>(&Signals::InvalidConfigValueError, ipc::EInstanceTypeAll).Send(true);
  } catch (const Rpc::CommunicationException& exception) {
    LOG(Error, "(src/feedback:118) Failed to send diagnostics data. Error: '{}'.",
        exception.what());
  }
  std::shared_ptr<IHsmInterface> machine;
  {
    const std::lock_guard lock(mMutex);
    machine = mMachine.lock();
  }
  if (machine) {
    machine->PostEvent(std::make_shared<IntFatalError>());
  }
}
