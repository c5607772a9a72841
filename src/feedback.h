// The application: builds every object of the process in a fixed order, joins them and runs.
#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/rpc/appcommunicationhost.h"
#include "platform/worker/worker.h"
#include "src/components/feedbackhsmactionhandler.h"
#include "src/configerrors.h"
#include "src/feedbackservice.h"
#include "statemachines/feedbackhsm.h"
#include "statemachines/processcontrolservice.h"
#include "statemachines/utils/statemachinesutility.h"

class IDiagnostics;
class IMeter;

// Threads: constructed, run and destroyed on the main thread.
class CFeedback {
 public:
  // The root directory is expected to end with a slash. Throws what a component's constructor
  // throws, among them Rpc::CommunicationException when another process serves these services.
  explicit CFeedback(const std::string& root);
  ~CFeedback();
  CFeedback(const CFeedback&) = delete;
  CFeedback& operator=(const CFeedback&) = delete;

  // Serves until the machine has reached its end, which SIGINT asks for. Once.
  void Run();

 private:
  using Machine = CHsm<CFeedbackHsmActionHandlerBase>;

  void ConnectIDiagnostics() const;
  void ConnectIFeedback() const;
  void RunStateMachine() const;
  void Stop();

  const std::shared_ptr<CConfigErrors> mConfigErrors = std::make_shared<CConfigErrors>();
  std::shared_ptr<AppCommunicationHost<GrpcBackend>> mHost;
  std::shared_ptr<CProcessControlService> mProcessControlService;
  std::shared_ptr<CFeedbackService> mFeedbackService;
  std::shared_ptr<CFeedbackHsmActionHandler> mActionHandler;
  std::shared_ptr<Machine> mMachine;
  std::shared_ptr<IDiagnostics> mDiagnostics;
  std::vector<std::shared_ptr<IMeter>> mMeters;
  std::thread mServerThread;
  std::thread mNotificationThread;
  CProcessControlBridge mBridge;
  std::shared_ptr<CWorker> mWorker;
};
